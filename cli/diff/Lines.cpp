#include <cli/diff/Lines.h>
#include <platform/kernel/OdString.h>

#include <algorithm>

namespace qrv_cli {

namespace {

constexpr std::size_t bytesSearchedForNul = 8000;
constexpr std::size_t partSizeBytes = 1 << 16;

bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// Where a part that begins at `begin` may end without cutting a character.
std::size_t endOfPart(std::string_view bytes, std::size_t begin) {
    std::size_t end = std::min(begin + partSizeBytes, bytes.size());
    constexpr std::size_t longestCharacter = 4;
    for (std::size_t back = 0; back < longestCharacter && end < bytes.size(); ++back) {
        if (!continuesCharacter(bytes[end]))
            break;
        --end;
    }
    return end;
}

/// A unit 0xDC80 to 0xDCFF behind no first half of a pair stands for a byte that is not UTF-8.
bool hasStrayByte(const OdString& text) {
    wchar_t previous = 0;
    for (const wchar_t unit : text.toWide()) {
        const bool isSecondHalf = unit >= 0xDC00 && unit <= 0xDFFF;
        const bool followsFirstHalf = previous >= 0xD800 && previous <= 0xDBFF;
        if (isSecondHalf && !followsFirstHalf)
            return true;
        previous = unit;
    }
    return false;
}

}  // namespace

Lines::Lines(std::string_view text) : text_(text), begins_{0} {
    for (std::size_t end = 0; end < text.size();) {
        end = std::min(text.find('\n', end), text.size() - 1) + 1;
        begins_.push_back(static_cast<std::uint32_t>(end));
    }
}

bool isText(std::string_view bytes) {
    if (bytes.substr(0, bytesSearchedForNul).find('\0') != std::string_view::npos)
        return false;
    // In parts, because the text needs four times the bytes.
    for (std::size_t begin = 0; begin < bytes.size();) {
        const std::size_t end = endOfPart(bytes, begin);
        if (hasStrayByte(OdString::fromNarrow(bytes.substr(begin, end - begin))))
            return false;
        begin = end;
    }
    return true;
}

}  // namespace qrv_cli
