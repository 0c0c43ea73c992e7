#include <common/worktree/SimpleGlobInternal.h>
#include <platform/ut/FileName.h>

#include <algorithm>
#include <utility>

namespace common {

namespace {

bool isLineBreak(char byte) {
    return byte == '\n' || byte == '\r';
}

char toLower(char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

bool needsExpression(wchar_t unit) {
    constexpr std::wstring_view special = L"^$\\+()[]{}|";
    return unit == L'\0' || special.find(unit) != std::wstring_view::npos;
}

bool matchesByte(char patternByte, char nameByte) {
    return patternByte == '?' ? !isLineBreak(nameByte) : patternByte == toLower(nameByte);
}

}  // namespace

std::optional<SimpleGlob> SimpleGlob::from(const OdString& line) {
    std::wstring pattern = line.toWide();
    std::replace(pattern.begin(), pattern.end(), L'/', ut::FileName::getPathSeparator());
    if (std::any_of(pattern.begin(), pattern.end(), needsExpression))
        return std::nullopt;
    return SimpleGlob(OdString(std::move(pattern)).toNarrow());
}

SimpleGlob::SimpleGlob(std::string pattern) : pattern_(std::move(pattern)) {
    std::transform(pattern_.begin(), pattern_.end(), pattern_.begin(), toLower);
    starCount_ = static_cast<std::size_t>(std::count(pattern_.begin(), pattern_.end(), '*'));
    const std::size_t lastStar = pattern_.rfind('*');
    lengthBehindLastStar_ =
        lastStar == std::string::npos ? pattern_.size() : pattern_.size() - lastStar - 1;
}

/// Tells most names from most rules ("*.bak") by a byte or two. Expects a name that is long enough.
bool SimpleGlob::matchesEnd(std::string_view nameNarrow) const {
    return std::equal(pattern_.rbegin(),
                      pattern_.rbegin() + static_cast<std::ptrdiff_t>(lengthBehindLastStar_),
                      nameNarrow.rbegin(), matchesByte);
}

bool SimpleGlob::matches(std::string_view nameNarrow) const {
    if (nameNarrow.size() < pattern_.size() - starCount_ || !matchesEnd(nameNarrow))
        return false;
    std::size_t inPattern = 0;
    std::size_t inName = 0;
    std::size_t behindStar = std::string::npos;
    std::size_t starEnd = 0;
    while (inName < nameNarrow.size()) {
        if (inPattern < pattern_.size() && pattern_[inPattern] == '*') {
            behindStar = ++inPattern;
            starEnd = inName;
        } else if (inPattern < pattern_.size() &&
                   matchesByte(pattern_[inPattern], nameNarrow[inName])) {
            ++inPattern;
            ++inName;
        } else {
            // Only the last star is worth widening: an earlier one would take from it nothing but
            // possibilities. So a line break in its way is the end as well.
            if (behindStar == std::string::npos || isLineBreak(nameNarrow[starEnd]))
                return false;
            inName = ++starEnd;
            inPattern = behindStar;
        }
    }
    return pattern_.find_first_not_of('*', inPattern) == std::string::npos;
}

}  // namespace common
