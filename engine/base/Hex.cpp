#include <engine/base/Hex.h>

namespace qrv {

namespace {

constexpr std::string_view hexDigits = "0123456789abcdef";

}  // namespace

std::string toHex(std::string_view bytes) {
    std::string digits;
    digits.reserve(2 * bytes.size());
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        digits += hexDigits[value >> 4U];
        digits += hexDigits[value & 0xFU];
    }
    return digits;
}

std::string fromHex(std::string_view digits) {
    if (digits.size() % 2 != 0)
        return {};
    std::string bytes;
    bytes.reserve(digits.size() / 2);
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const std::size_t high = hexDigits.find(digits[i]);
        const std::size_t low = hexDigits.find(digits[i + 1]);
        if (high == std::string_view::npos || low == std::string_view::npos)
            return {};
        bytes += static_cast<char>(high << 4U | low);
    }
    return bytes;
}

}  // namespace qrv
