#include <common/json/NumberInternal.h>
#include <common/json/TokenScannerInternal.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>

namespace jsonlib::json::detail {

namespace {

bool isDigit(wchar_t unit) {
    return unit >= L'0' && unit <= L'9';
}

/// Whether a string's character cannot simply be copied: its end, an escape, or a character that
/// has to be split into UTF-16 units.
bool isSpecialInString(wchar_t unit) {
    return unit == L'"' || unit == L'\\' || static_cast<std::uint32_t>(unit) > 0xFFFF;
}

}  // namespace

void TokenScanner::expect(std::wstring_view keyword) {
    for (const wchar_t letter : keyword) {
        if (peek() != letter)
            throw Error();
        ++position_;
    }
}

void TokenScanner::refuse() {
    if (peek() == L'"')
        string();
    throw Error();
}

std::wstring TokenScanner::string() {
    const wchar_t* const begin = ++position_;
    position_ = endOfPlainRun(begin);
    return peek() == L'"' ? std::wstring(begin, position_++) : stringWithEscapes(begin);
}

std::wstring TokenScanner::stringWithEscapes(const wchar_t* begin) {
    text_.assign(begin, position_);
    while (position_ != end_) {
        const wchar_t special = *position_++;
        if (special == L'"')
            return text_;
        if (special == L'\\')
            text_ += escape();
        else
            appendCharacter(special);
        const wchar_t* const run = position_;
        position_ = endOfPlainRun(run);
        text_.append(run, position_);
    }
    // Not a syntax error: a string without an end fails as the buffer of an endless string would.
    throw std::length_error("a JSON string has no end");
}

const wchar_t* TokenScanner::endOfPlainRun(const wchar_t* begin) const {
    // Whole blocks without a branch for each character are what compilers turn into vector code.
    constexpr std::ptrdiff_t block = 16;
    while (end_ - begin >= block) {
        bool hasSpecial = false;
        for (std::ptrdiff_t index = 0; index < block; ++index)
            hasSpecial |= isSpecialInString(begin[index]);
        if (hasSpecial)
            break;
        begin += block;
    }
    while (begin != end_ && !isSpecialInString(*begin))
        ++begin;
    return begin;
}

/// Appends a character above 0xFFFF as its surrogate pair; U+FFFD for one that Unicode does not
/// have.
void TokenScanner::appendCharacter(wchar_t character) {
    const auto code = static_cast<char32_t>(character);
    if (code > 0x10FFFF) {
        text_ += L'\xFFFD';
        return;
    }
    text_ += static_cast<wchar_t>(0xD7C0 + (code >> 10));
    text_ += static_cast<wchar_t>(0xDC00 + (code & 0x3FF));
}

wchar_t TokenScanner::escape() {
    const wchar_t letter = peek();
    if (position_ != end_)
        ++position_;
    switch (letter) {
        case L'n':
            return L'\n';
        case L't':
            return L'\t';
        case L'r':
            return L'\r';
        case L'f':
            return L'\f';
        case L'b':
            return L'\b';
        case L'"':
        case L'\\':
        case L'/':
            return letter;
        case L'u':
            return hexadecimal();
        default:
            throw Error();
    }
}

/// Exactly four digits, which stand for one unit: a pair of surrogates is two escapes.
wchar_t TokenScanner::hexadecimal() {
    unsigned unit = 0;
    for (int count = 0; count < 4; ++count) {
        const wchar_t digit = peek();
        if (isDigit(digit))
            unit = unit * 16 + static_cast<unsigned>(digit - L'0');
        else if (digit >= L'a' && digit <= L'f')
            unit = unit * 16 + static_cast<unsigned>(digit - L'a' + 10);
        else if (digit >= L'A' && digit <= L'F')
            unit = unit * 16 + static_cast<unsigned>(digit - L'A' + 10);
        else
            throw Error();
        ++position_;
    }
    return static_cast<wchar_t>(unit);
}

Value TokenScanner::number() {
    const wchar_t* const begin = position_;
    if (peek() == L'-')
        ++position_;
    if (!isDigit(peek()))
        throw Error();
    // A leading zero ends the integer part: further digits are a token of their own.
    if (peek() == L'0')
        ++position_;
    else
        skipDigits();
    const wchar_t* const integerEnd = position_;
    if (peek() == L'.') {
        ++position_;
        skipDigits();
    }
    if (peek() == L'e' || peek() == L'E') {
        ++position_;
        if (peek() == L'+' || peek() == L'-')
            ++position_;
        if (!isDigit(peek()))
            throw Error();
        skipDigits();
    }
    if (position_ == integerEnd)
        return toInteger(begin);
    std::string decimal;
    for (const wchar_t* character = begin; character != position_; ++character)
        decimal += static_cast<char>(*character);
    return toReal(decimal);
}

void TokenScanner::skipDigits() {
    while (isDigit(peek()))
        ++position_;
}

/// The integer between `begin` and the position: unsigned without a minus sign, else signed. What
/// does not fit becomes the nearest end of the range. The sign of a zero is not kept.
Value TokenScanner::toInteger(const wchar_t* begin) const {
    const bool isNegative = *begin == L'-';
    constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();
    const std::uint64_t limit = isNegative ? std::uint64_t{1} << 63 : largest;
    std::uint64_t magnitude = 0;
    for (const wchar_t* place = isNegative ? begin + 1 : begin; place != position_; ++place) {
        const auto digit = static_cast<std::uint64_t>(*place - L'0');
        magnitude = magnitude > (limit - digit) / 10 ? limit : magnitude * 10 + digit;
    }
    if (!isNegative || magnitude == 0)
        return magnitude;
    return static_cast<std::int64_t>(0 - magnitude);
}

}  // namespace jsonlib::json::detail
