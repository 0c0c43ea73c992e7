#include <platform/kernel/OdDbHandle.h>

#include <array>
#include <charconv>
#include <limits>
#include <string>

OdDbHandle::OdDbHandle(const OdString& hexadecimal) {
    const std::string digits = hexadecimal.toNarrow();
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number_, 16);
    if (result.ec == std::errc::result_out_of_range)
        number_ = std::numeric_limits<std::uint64_t>::max();
}

OdString OdDbHandle::ascii() const {
    std::array<char, 16> digits{};
    const char* end = std::to_chars(digits.data(), digits.data() + digits.size(), number_, 16).ptr;
    OdString text = OdString::fromNarrow({digits.data(), end});
    return text.makeUpper();
}
