#include <common/worktree/ShortNameInternal.h>
#include <platform/ut/FileName.h>

#include <algorithm>
#include <string_view>

namespace common {

namespace {

bool isLineBreak(char byte) {
    return byte == '\n' || byte == '\r';
}

bool isLetter(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}

bool matchesByte(char nameByte, char pathByte) {
    return nameByte == '.' ? !isLineBreak(pathByte) : nameByte == pathByte;
}

Expression expressionOf(std::string text) {
    std::regex compiled = compiledExpression(text);
    return Expression(std::move(text), {}, std::move(compiled));
}

}  // namespace

ShortName::ShortName(const OdString& name)
    : nameNarrow_(name.toNarrow()), hasExtension_(ut::FileName(name).hasExt()) {
    // A closing bracket alone is a character like any other.
    if (nameNarrow_.find_first_of(R"(^$\*+?()[{|)") == std::string::npos)
        return;
    std::string text = ".*" + nameNarrow_;
    if (!hasExtension_)
        text += R"((\.[a-zA-Z]+)+$)";
    expression_ = expressionOf(std::move(text));
}

bool ShortName::matches(const OdString& path) const {
    const std::string pathNarrow = path.toNarrow();
    if (expression_)
        return expression_->matches(pathNarrow);
    return hasExtension_ ? endsAt(pathNarrow, pathNarrow.size()) : matchesAnyExtension(pathNarrow);
}

/// Goes from the end over one extension after the other, and looks before each for the name.
bool ShortName::matchesAnyExtension(const std::string& pathNarrow) const {
    std::size_t end = pathNarrow.size();
    for (;;) {
        std::size_t letters = end;
        while (letters > 0 && isLetter(pathNarrow[letters - 1]))
            --letters;
        if (letters == end || letters == 0 || pathNarrow[letters - 1] != '.')
            return false;
        end = letters - 1;
        if (endsAt(pathNarrow, end))
            return true;
    }
}

/// Whether the path up to `end` is anything without a line break, and then the name.
bool ShortName::endsAt(const std::string& pathNarrow, std::size_t end) const {
    if (end < nameNarrow_.size())
        return false;
    const auto begin = pathNarrow.begin() + static_cast<std::ptrdiff_t>(end - nameNarrow_.size());
    return std::equal(nameNarrow_.begin(), nameNarrow_.end(), begin, matchesByte) &&
           std::none_of(pathNarrow.begin(), begin, isLineBreak);
}

}  // namespace common
