#include <platform/kernel/Utf16Internal.h>
#include <platform/kernel/Utf8Internal.h>

#include <algorithm>
#include <array>
#include <type_traits>

namespace kernel {

namespace {

constexpr char32_t byteUnitBase = 0xDC00;

/// Whether a lone surrogate stands for a byte that is no UTF-8. Bytes below 0x80 always are UTF-8.
bool isByteUnit(char32_t codePoint) {
    return codePoint >= byteUnitBase + 0x80 && codePoint <= byteUnitBase + 0xFF;
}

/// Where the run of ASCII that begins at `from` ends. Whole blocks first: nearly all texts are
/// ASCII throughout, and the compiler turns a block into a few instructions.
template <class Element>
std::size_t asciiEnd(std::basic_string_view<Element> text, std::size_t from) {
    using Unsigned = std::make_unsigned_t<Element>;
    constexpr std::size_t blockSize = 32;
    while (text.size() - from >= blockSize) {
        Unsigned bits = 0;
        for (std::size_t i = 0; i < blockSize; ++i)
            bits = static_cast<Unsigned>(bits | static_cast<Unsigned>(text[from + i]));
        if (bits >= 0x80)
            break;
        from += blockSize;
    }
    while (from < text.size() && static_cast<Unsigned>(text[from]) < 0x80)
        ++from;
    return from;
}

std::size_t sequenceLength(unsigned char lead) {
    if (lead >= 0xC0 && lead < 0xE0)
        return 2;
    if (lead >= 0xE0 && lead < 0xF0)
        return 3;
    if (lead >= 0xF0 && lead < 0xF8)
        return 4;
    return 0;
}

/// Whether this many bytes are the one right way to write the code point.
bool isWellFormed(char32_t codePoint, std::size_t length) {
    constexpr std::array<char32_t, 5> smallest = {0, 0, 0x80, 0x800, 0x10000};
    return codePoint >= smallest[length] && codePoint <= 0x10FFFF && !QChar::isSurrogate(codePoint);
}

/// The character at `at`, which is no ASCII. One byte alone becomes its unit where no valid
/// sequence begins; the bytes after it are then looked at one by one in the same way.
Character decodeAt(std::string_view bytes, std::size_t at) {
    const auto lead = static_cast<unsigned char>(bytes[at]);
    const Character invalid = {byteUnitBase + lead, 1};
    const std::size_t length = sequenceLength(lead);
    if (length == 0 || bytes.size() - at < length)
        return invalid;
    char32_t codePoint = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[at + i]);
        if ((byte & 0xC0U) != 0x80)
            return invalid;
        codePoint = (codePoint << 6) | (byte & 0x3FU);
    }
    return isWellFormed(codePoint, length) ? Character{codePoint, length} : invalid;
}

std::size_t countUnits(std::string_view bytes) {
    std::size_t count = 0;
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t end = asciiEnd(bytes, at);
        count += end - at;
        at = end;
        if (at == bytes.size())
            break;
        const Character next = decodeAt(bytes, at);
        count += QChar::requiresSurrogates(next.codePoint) ? 2 : 1;
        at += next.length;
    }
    return count;
}

std::size_t encodedSize(char32_t codePoint) {
    if (codePoint < 0x80 || isByteUnit(codePoint))
        return 1;
    if (codePoint < 0x800)
        return 2;
    return codePoint < 0x10000 ? 3 : 4;
}

std::size_t countBytes(std::wstring_view units) {
    std::size_t count = 0;
    for (std::size_t at = 0; at < units.size();) {
        const Character next = characterAt(units, at);
        count += encodedSize(next.codePoint);
        at += next.length;
    }
    return count;
}

char* encodeTo(char* output, char32_t codePoint) {
    const std::size_t size = encodedSize(codePoint);
    if (size == 1) {
        *output = static_cast<char>(codePoint);  // a byte unit's low eight bits are its byte
        return output + 1;
    }
    for (std::size_t i = size - 1; i > 0; --i) {
        output[i] = static_cast<char>(0x80U | (codePoint & 0x3FU));
        codePoint >>= 6;
    }
    output[0] = static_cast<char>((0xF00U >> size) | codePoint);
    return output + size;
}

}  // namespace

std::wstring unitsFromUtf8(std::string_view bytes) {
    if (asciiEnd(bytes, 0) == bytes.size()) {
        checkedLength(bytes.size());
        return {bytes.begin(), bytes.end()};
    }
    std::wstring units(checkedLength(countUnits(bytes)), L'\0');
    wchar_t* output = units.data();
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t end = asciiEnd(bytes, at);
        output = std::copy(bytes.data() + at, bytes.data() + end, output);
        at = end;
        if (at == bytes.size())
            break;
        const Character next = decodeAt(bytes, at);
        output = writeUnits(next.codePoint, output);
        at += next.length;
    }
    return units;
}

std::string utf8FromUnits(std::wstring_view units) {
    const bool isAscii = asciiEnd(units, 0) == units.size();
    std::string bytes(isAscii ? units.size() : countBytes(units), '\0');
    char* output = bytes.data();
    for (std::size_t at = 0; at < units.size();) {
        const std::size_t end = asciiEnd(units, at);
        output = std::transform(units.data() + at, units.data() + end, output,
                                [](wchar_t unit) { return static_cast<char>(unit); });
        at = end;
        if (at == units.size())
            break;
        const Character next = characterAt(units, at);
        output = encodeTo(output, next.codePoint);
        at += next.length;
    }
    return bytes;
}

}  // namespace kernel
