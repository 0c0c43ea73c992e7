#include <platform/kernel/OdString.h>
#include <platform/kernel/Utf16Internal.h>
#include <platform/kernel/Utf8Internal.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

/// Without an early end, so that the compiler can look at many at once: hardly any text has one.
bool hasWideCharacters(std::wstring_view text) {
    char32_t bits = 0;
    for (const wchar_t character : text)
        bits |= static_cast<char32_t>(character);
    return bits > 0xFFFF;
}

std::wstring splitWideCharacters(std::wstring_view text) {
    constexpr char32_t replacementCharacter = 0xFFFD;
    std::wstring units;
    units.reserve(text.size());
    for (const wchar_t character : text) {
        const auto codePoint = static_cast<char32_t>(character);
        kernel::writeUnits(codePoint <= 0x10FFFF ? codePoint : replacementCharacter,
                           std::back_inserter(units));
    }
    return units;
}

std::wstring toUnits(std::wstring text) {
    return hasWideCharacters(text) ? splitWideCharacters(text) : std::move(text);
}

/// The static tables of `QChar` know no locale and give one character for one. Both have the same
/// number of units.
void mapCharacters(std::wstring& units, uint (*map)(uint)) {
    for (std::size_t at = 0; at < units.size();) {
        const kernel::Character character = kernel::characterAt(units, at);
        kernel::writeUnits(map(character.codePoint), units.data() + at);
        at += character.length;
    }
}

std::size_t fromBegin(int index) {
    return static_cast<std::size_t>(std::max(index, 0));
}

int toIndex(std::size_t position) {
    return position == std::wstring::npos ? -1 : static_cast<int>(position);
}

}  // namespace

OdString::OdString(const wchar_t* text)
    : OdString(text == nullptr ? std::wstring() : std::wstring(text)) {
}

OdString::OdString(const char* textUtf8)
    : OdString(fromNarrow(textUtf8 == nullptr ? std::string_view() : std::string_view(textUtf8))) {
}

OdString::OdString(std::wstring text) : units_(toUnits(std::move(text))) {
    kernel::checkedLength(units_.size());
}

OdString OdString::fromNarrow(std::string_view textUtf8) {
    OdString text;
    text.units_ = kernel::unitsFromUtf8(textUtf8);
    return text;
}

std::string OdString::toNarrow() const {
    return kernel::utf8FromUnits(units_);
}

OdString& OdString::operator+=(const OdString& other) {
    kernel::checkedLength(units_.size() + other.units_.size());
    units_ += other.units_;
    return *this;
}

OdString& OdString::operator+=(wchar_t character) {
    return *this += OdString(std::wstring(1, character));
}

OdString OdString::left(int count) const {
    return mid(0, count);
}

OdString OdString::right(int count) const {
    return mid(getLength() - std::clamp(count, 0, getLength()));
}

OdString OdString::mid(int first) const {
    return mid(first, getLength());
}

OdString OdString::mid(int first, int count) const {
    OdString part;
    const std::size_t begin = std::min(fromBegin(first), units_.size());
    part.units_ = units_.substr(begin, fromBegin(count));
    return part;
}

int OdString::find(wchar_t unit, int start) const {
    return toIndex(units_.find(unit, fromBegin(start)));
}

int OdString::find(const OdString& part, int start) const {
    return toIndex(units_.find(part.units_, fromBegin(start)));
}

int OdString::reverseFind(wchar_t unit) const {
    return toIndex(units_.rfind(unit));
}

OdString& OdString::makeLower() {
    mapCharacters(units_, &QChar::toLower);
    return *this;
}

OdString& OdString::makeUpper() {
    mapCharacters(units_, &QChar::toUpper);
    return *this;
}

int OdString::iCompare(const OdString& other) const {
    OdString lower = *this;
    OdString otherLower = other;
    return lower.makeLower().units_.compare(otherLower.makeLower().units_);
}
