#pragma once

#include <platform/kernel/OdString.h>

#include <cstdint>
#include <string_view>

namespace common {

/// Takes the tokens of a JSON text straight from its UTF-8 bytes, where the caller knows which one
/// must come next. It only knows the plain way of writing things: everything else, be it an error
/// or merely unusual, throws `NotPlain`, and the whole text is then for `jsonlib::json::read` to
/// judge. What it does take it understands as that reader would.
class RowScanner {
public:
    struct NotPlain {};

    /// The bytes must outlive the scanner.
    explicit RowScanner(std::string_view bytesUtf8);

    /// Whether the next token is this one-character token; it is taken then.
    bool take(char token);
    /// Takes the one-character token that must come next.
    void expect(char token);
    /// A member's name and the colon behind it. The name is as it is written, escapes included.
    std::string_view name();
    OdString string();
    /// An integer that a signed 64-bit number holds.
    std::int64_t integer();
    bool boolean();

private:
    void skipBlanks();
    std::string_view rest() const;
    std::string_view quoted();
    OdString stringWithEscapes();

    const char* position_;
    const char* end_;
};

}  // namespace common
