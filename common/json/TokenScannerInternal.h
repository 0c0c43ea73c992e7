#pragma once

#include <common/json/Value.h>

#include <string>
#include <string_view>

namespace jsonlib::json::detail {

/// Takes the tokens of a JSON text from a range of wide characters, one after the other. What is
/// wrong throws `Error`, and a string without an end `std::length_error`.
class TokenScanner {
public:
    struct Error {};

    TokenScanner(const wchar_t* begin, const wchar_t* end) : position_(begin), end_(end) {}

    /// The character at the position; NUL at the end, which is also how a NUL between tokens
    /// counts.
    wchar_t peek() const { return position_ != end_ ? *position_ : L'\0'; }
    /// The first character of the next token.
    wchar_t peekToken() {
        while (position_ != end_ &&
               (*position_ == L' ' || (*position_ >= L'\t' && *position_ <= L'\r')))
            ++position_;
        return peek();
    }

    /// Takes the character at the position, which is there.
    void skip() { ++position_; }
    void expect(std::wstring_view keyword);
    /// From its opening quote on, which is at the position.
    std::wstring string();
    Value number();
    /// Tokens are judged when they are complete: a string that nobody wants here is taken to its
    /// end first, which it may not have.
    [[noreturn]] void refuse();

private:
    std::wstring stringWithEscapes(const wchar_t* begin);
    const wchar_t* endOfPlainRun(const wchar_t* begin) const;
    void appendCharacter(wchar_t character);
    wchar_t escape();
    wchar_t hexadecimal();

    void skipDigits();
    Value toInteger(const wchar_t* begin) const;

    const wchar_t* position_;
    const wchar_t* end_;
    std::wstring text_;
};

}  // namespace jsonlib::json::detail
