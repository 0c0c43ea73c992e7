#include <common/json/NumberInternal.h>
#include <common/json/Reader.h>

#include <cstddef>
#include <limits>
#include <string_view>

namespace jsonlib::json {

namespace detail {

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

/// Reads one value from a range of wide characters. The containers that are still open are kept on
/// a stack of their own, so that depth costs memory but never the program's stack; each value is
/// made in the place where it stays.
template <class Value, class Iterator>
class Parser {
public:
    struct Error {};

    Parser(Iterator begin, Iterator end) : position_(begin), end_(end) {}

    /// Throws `Error` for a syntax error and `std::length_error` for a string without an end, also
    /// where no string may stand.
    Value parse() {
        Value root;
        parseValue(root);
        while (!open_.empty()) {
            Value& container = *open_.back();
            Value* place = container.type() == Value_type::object
                               ? nextMember(container.getObject())
                               : nextElement(container.getArray());
            if (place != nullptr)
                parseValue(*place);
            else
                open_.pop_back();
        }
        return root;
    }

private:
    using String = typename Value::String;
    using Object = typename Value::Object;
    using Array = typename Value::Array;

    /// The character at the position; NUL at the end, which is also how a NUL between tokens
    /// counts.
    wchar_t peek() const { return position_ != end_ ? *position_ : L'\0'; }

    wchar_t peekToken() {
        while (position_ != end_ &&
               (*position_ == L' ' || (*position_ >= L'\t' && *position_ <= L'\r')))
            ++position_;
        return peek();
    }

    void parseValue(Value& place);
    Value* nextElement(Array& array);
    Value* nextMember(Object& object);
    bool closes(wchar_t bracket, bool isFirst);
    void expect(std::wstring_view keyword);
    [[noreturn]] void refuseToken();

    String scanString();
    String scanStringWithEscapes(Iterator begin);
    Iterator endOfPlainRun(Iterator begin) const;
    void appendCharacter(wchar_t character);
    wchar_t scanEscape();
    wchar_t scanHexadecimal();

    Value scanNumber();
    void skipDigits();
    Value toInteger(Iterator begin) const;

    Iterator position_;
    Iterator end_;
    String text_;
    std::vector<Value*> open_;
};

template <class Value, class Iterator>
void Parser<Value, Iterator>::parseValue(Value& place) {
    const wchar_t first = peekToken();
    switch (first) {
        case L'{':
            ++position_;
            place = Object();
            open_.push_back(&place);
            break;
        case L'[':
            ++position_;
            place = Array();
            open_.push_back(&place);
            break;
        case L'"':
            place = scanString();
            break;
        case L't':
            expect(L"true");
            place = true;
            break;
        case L'f':
            expect(L"false");
            place = false;
            break;
        case L'n':
            expect(L"null");
            place = Value();
            break;
        default:
            place = scanNumber();
    }
}

/// The place of the array's next element, or null when the array ends here.
template <class Value, class Iterator>
Value* Parser<Value, Iterator>::nextElement(Array& array) {
    return closes(L']', array.empty()) ? nullptr : &array.emplace_back();
}

/// The place of the object's next member, or null when the object ends here. An earlier member of
/// the same key is replaced.
template <class Value, class Iterator>
Value* Parser<Value, Iterator>::nextMember(Object& object) {
    if (closes(L'}', object.empty()))
        return nullptr;
    if (peek() != L'"')
        throw Error();
    String key = scanString();
    if (peekToken() != L':')
        refuseToken();
    ++position_;
    // Our own files have their keys in order, so the end is the likely place.
    return &object.try_emplace(object.end(), std::move(key))->second;
}

/// Takes the comma between two values, and the closing bracket if it is there. A comma may also
/// stand before the bracket, but not alone.
template <class Value, class Iterator>
bool Parser<Value, Iterator>::closes(wchar_t bracket, bool isFirst) {
    if (!isFirst && peekToken() != bracket) {
        if (peek() != L',')
            refuseToken();
        ++position_;
    }
    if (peekToken() != bracket)
        return false;
    ++position_;
    return true;
}

template <class Value, class Iterator>
void Parser<Value, Iterator>::expect(std::wstring_view keyword) {
    for (const wchar_t letter : keyword) {
        if (peek() != letter)
            throw Error();
        ++position_;
    }
}

/// Tokens are judged when they are complete: a string that nobody wants here is taken to its end
/// first, which it may not have.
template <class Value, class Iterator>
void Parser<Value, Iterator>::refuseToken() {
    if (peek() == L'"')
        scanString();
    throw Error();
}

template <class Value, class Iterator>
typename Value::String Parser<Value, Iterator>::scanString() {
    const Iterator begin = ++position_;
    position_ = endOfPlainRun(begin);
    return peek() == L'"' ? String(begin, position_++) : scanStringWithEscapes(begin);
}

template <class Value, class Iterator>
typename Value::String Parser<Value, Iterator>::scanStringWithEscapes(Iterator begin) {
    text_.assign(begin, position_);
    while (position_ != end_) {
        const wchar_t special = *position_++;
        if (special == L'"')
            return text_;
        if (special == L'\\')
            text_ += scanEscape();
        else
            appendCharacter(special);
        const Iterator run = position_;
        position_ = endOfPlainRun(run);
        text_.append(run, position_);
    }
    // Not a syntax error: a string without an end fails as the buffer of an endless string would.
    throw std::length_error("a JSON string has no end");
}

template <class Value, class Iterator>
Iterator Parser<Value, Iterator>::endOfPlainRun(Iterator begin) const {
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
template <class Value, class Iterator>
void Parser<Value, Iterator>::appendCharacter(wchar_t character) {
    const auto code = static_cast<char32_t>(character);
    if (code > 0x10FFFF) {
        text_ += L'\xFFFD';
        return;
    }
    text_ += static_cast<wchar_t>(0xD7C0 + (code >> 10));
    text_ += static_cast<wchar_t>(0xDC00 + (code & 0x3FF));
}

template <class Value, class Iterator>
wchar_t Parser<Value, Iterator>::scanEscape() {
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
            return scanHexadecimal();
        default:
            throw Error();
    }
}

/// Exactly four digits, which stand for one unit: a pair of surrogates is two escapes.
template <class Value, class Iterator>
wchar_t Parser<Value, Iterator>::scanHexadecimal() {
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

template <class Value, class Iterator>
Value Parser<Value, Iterator>::scanNumber() {
    const Iterator begin = position_;
    if (peek() == L'-')
        ++position_;
    if (!isDigit(peek()))
        throw Error();
    // A leading zero ends the integer part: further digits are a token of their own.
    if (peek() == L'0')
        ++position_;
    else
        skipDigits();
    const Iterator integerEnd = position_;
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
    for (Iterator character = begin; character != position_; ++character)
        decimal += static_cast<char>(*character);
    return toReal(decimal);
}

template <class Value, class Iterator>
void Parser<Value, Iterator>::skipDigits() {
    while (isDigit(peek()))
        ++position_;
}

/// The integer between `begin` and the position: unsigned without a minus sign, else signed. What
/// does not fit becomes the nearest end of the range. The sign of a zero is not kept.
template <class Value, class Iterator>
Value Parser<Value, Iterator>::toInteger(Iterator begin) const {
    const bool isNegative = *begin == L'-';
    constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();
    const std::uint64_t limit = isNegative ? std::uint64_t{1} << 63 : largest;
    std::uint64_t magnitude = 0;
    for (Iterator place = isNegative ? begin + 1 : begin; place != position_; ++place) {
        const auto digit = static_cast<std::uint64_t>(*place - L'0');
        magnitude = magnitude > (limit - digit) / 10 ? limit : magnitude * 10 + digit;
    }
    if (!isNegative || magnitude == 0)
        return magnitude;
    return static_cast<std::int64_t>(0 - magnitude);
}

}  // namespace detail

bool read(const wchar_t* begin, const wchar_t* end, Value& value) {
    using Parser = detail::Parser<Value, const wchar_t*>;
    try {
        value = Parser(begin, end).parse();
        return true;
    } catch (const Parser::Error&) {
        return false;
    }
}

}  // namespace jsonlib::json
