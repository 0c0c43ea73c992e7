#include <common/json/NumberInternal.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>

namespace jsonlib::json::detail {

namespace {

/// The number after the "e", or 0 without one. So large that it could overflow, it is only known to
/// be large: no number has that many digits to make up for it.
std::int64_t exponentOf(std::string_view decimal) {
    const std::size_t mark = decimal.find_first_of("eE");
    if (mark == std::string_view::npos)
        return 0;
    std::string_view digits = decimal.substr(mark + 1);
    if (digits.front() == '+')
        digits.remove_prefix(1);
    constexpr std::int64_t large = std::numeric_limits<std::int64_t>::max() / 2;
    std::int64_t exponent = digits.front() == '-' ? -large : large;
    std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
    return std::clamp(exponent, -large, large);
}

/// Whether a number that no double can hold is too large rather than too small.
bool isTooLarge(std::string_view decimal) {
    const std::string_view mantissa = decimal.substr(0, decimal.find_first_of("eE"));
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    const std::size_t leading = mantissa.find_first_of("123456789");
    const std::int64_t placesLeftOfPoint =
        static_cast<std::int64_t>(point) - static_cast<std::int64_t>(leading);
    return placesLeftOfPoint + exponentOf(decimal) > 0;
}

}  // namespace

double toReal(std::string_view decimal) {
    double real = 0;
    const auto result = std::from_chars(decimal.data(), decimal.data() + decimal.size(), real);
    if (result.ec == std::errc())
        return real;
    const double nearest = isTooLarge(decimal) ? std::numeric_limits<double>::infinity() : 0.0;
    return decimal.front() == '-' ? -nearest : nearest;
}

}  // namespace jsonlib::json::detail
