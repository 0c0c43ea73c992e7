#include <common/json/Reader.h>
#include <common/json/RowScannerInternal.h>

#include <charconv>
#include <cstddef>
#include <system_error>

namespace common {

namespace {

bool isBlank(char byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

/// Where in `text`, which begins behind a string's opening quote, its closing one stands.
std::size_t closingQuote(std::string_view text) {
    std::size_t position = text.find_first_of("\"\\");
    while (position != std::string_view::npos && text[position] == '\\')
        position = text.find_first_of("\"\\", position + 2);
    if (position == std::string_view::npos)
        throw RowScanner::NotPlain();
    return position;
}

}  // namespace

RowScanner::RowScanner(std::string_view bytesUtf8)
    : position_(bytesUtf8.data()), end_(bytesUtf8.data() + bytesUtf8.size()) {
}

bool RowScanner::take(char token) {
    skipBlanks();
    if (position_ == end_ || *position_ != token)
        return false;
    ++position_;
    return true;
}

void RowScanner::expect(char token) {
    if (!take(token))
        throw NotPlain();
}

std::string_view RowScanner::name() {
    expect('"');
    const std::string_view name = quoted();
    expect(':');
    return name;
}

OdString RowScanner::string() {
    expect('"');
    const char* const begin = position_;
    const std::string_view contents = quoted();
    if (contents.find('\\') == std::string_view::npos)
        return OdString::fromNarrow(contents);
    position_ = begin;
    return stringWithEscapes();
}

std::int64_t RowScanner::integer() {
    skipBlanks();
    std::int64_t number = 0;
    const std::from_chars_result result = std::from_chars(position_, end_, number);
    if (result.ec != std::errc())
        throw NotPlain();
    const char* const digits = *position_ == '-' ? position_ + 1 : position_;
    // For the full reader a number ends behind its leading zero.
    if (*digits == '0' && result.ptr - digits > 1)
        throw NotPlain();
    position_ = result.ptr;
    return number;
}

bool RowScanner::boolean() {
    skipBlanks();
    const bool isTrue = rest().starts_with("true");
    if (!isTrue && !rest().starts_with("false"))
        throw NotPlain();
    position_ += isTrue ? 4 : 5;
    return isTrue;
}

void RowScanner::skipBlanks() {
    // Half of a file of ours is indentation behind line feeds.
    constexpr std::string_view indentation = "        ";
    while (position_ != end_ && isBlank(*position_)) {
        ++position_;
        while (rest().starts_with(indentation))
            position_ += indentation.size();
    }
}

std::string_view RowScanner::rest() const {
    return {position_, static_cast<std::size_t>(end_ - position_)};
}

/// The bytes up to the next quote, which is taken as well.
std::string_view RowScanner::quoted() {
    const std::size_t quote = rest().find('"');
    if (quote == std::string_view::npos)
        throw NotPlain();
    const std::string_view bytes = rest().substr(0, quote);
    position_ += quote + 1;
    return bytes;
}

// Escapes are rare, and there shall be one place that knows them.
OdString RowScanner::stringWithEscapes() {
    const std::size_t quote = closingQuote(rest());
    const OdString literal = OdString::fromNarrow({position_ - 1, quote + 2});
    jsonlib::json::Value value;
    if (!jsonlib::json::read(literal.c_str(), literal.c_str() + literal.getLength(), value))
        throw NotPlain();
    position_ += quote + 1;
    return OdString(value.getString());
}

}  // namespace common
