#include <common/worktree/ExpressionInternal.h>
#include <common/worktree/ExpressionSizeInternal.h>
#include <common/worktree/IgnoreLine.h>
#include <common/worktree/SimpleGlobInternal.h>
#include <platform/ut/FileName.h>

#include <optional>
#include <utility>

namespace common {

namespace {

// Longer lines are not compiled: they serve nobody, and the expression compiler recurses.
constexpr int longestRule = 2000;

/// The expression that stands for one character of a glob. Brackets and everything else that means
/// something in expressions keep that meaning.
std::wstring expressionOf(wchar_t globUnit) {
    switch (globUnit) {
        case L'*':
            return L".*";
        case L'?':
            return L".";
        case L'.':
            return L"\\.";
        case L'/':
            // Deliberately not escaped, also where the separator is a backslash.
            return {ut::FileName::getPathSeparator()};
        default:
            return {globUnit};
    }
}

OdString expressionOf(const OdString& glob) {
    std::wstring expression = L"^";
    for (int i = 0; i < glob.getLength(); ++i)
        expression += expressionOf(glob[i]);
    return OdString(expression + L"$");
}

bool isExpression(const OdString& line) {
    return !line.isEmpty() && line[0] == L'^';
}

}  // namespace

IgnoreLine::IgnoreLine(const OdString& line) : line_(line) {
    if (!isRule())
        return;
    expression_ = (isExpression(line) ? line : expressionOf(line)).toNarrow();
    if (line.getLength() > longestRule)
        return;
    if (std::optional<SimpleGlob> glob = SimpleGlob::from(line))
        glob_ = std::make_shared<const SimpleGlob>(std::move(*glob));
}

bool IgnoreLine::isRule() const {
    return !line_.isEmpty() && line_[0] != L'#';
}

bool IgnoreLine::plainGlobMatches(std::string_view nameNarrow) const {
    return glob_->matches(nameNarrow);
}

std::regex::flag_type IgnoreLine::letterCase() const {
    return isExpression(line_) ? std::regex::flag_type() : std::regex::icase;
}

std::size_t IgnoreLine::size() const {
    return expressionSize(expression_);
}

std::regex IgnoreLine::compiled(std::regex::flag_type furtherFlags) const {
    if (line_.getLength() > longestRule)
        throw std::regex_error(std::regex_constants::error_complexity);
    return compiledExpression(expression_, letterCase() | furtherFlags);
}

}  // namespace common
