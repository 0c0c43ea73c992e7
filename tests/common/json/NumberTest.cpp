#include <common/json/NumberInternal.h>

#include <gmock/gmock.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>

namespace jsonlib::json::detail {
namespace {

TEST(ToReal, FindsTheNearestRealOfEveryWrittenOne) {
    std::mt19937_64 random(20240305);
    int count = 0;
    while (count < 100'000) {
        const double real = std::bit_cast<double>(random());
        if (!std::isfinite(real))
            continue;
        ++count;
        char text[64];
        const auto written =
            std::to_chars(text, text + sizeof text, real, std::chars_format::scientific);
        const std::string_view decimal(text, static_cast<std::size_t>(written.ptr - text));
        ASSERT_EQ(toReal(decimal), real) << decimal;
    }
}

TEST(ToReal, KeepsTheSmallestReals) {
    EXPECT_EQ(toReal("4.9406564584124654e-324"), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(toReal("2.2250738585072011e-308"),
              std::bit_cast<double>(std::uint64_t{0xFFFFFFFFFFFFF}));
    EXPECT_EQ(toReal("2.4703282292062327e-324"), 0.0);
    EXPECT_EQ(toReal("2.4703282292062328e-324"), std::numeric_limits<double>::denorm_min());
}

TEST(ToReal, KeepsTheLargestReals) {
    constexpr double largest = std::numeric_limits<double>::max();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(toReal("1.7976931348623157e308"), largest);
    EXPECT_EQ(toReal("1.7976931348623158e308"), largest);
    EXPECT_EQ(toReal("1.7976931348623159e308"), infinity);
    EXPECT_EQ(toReal("-1.7976931348623159e308"), -infinity);
}

TEST(ToReal, ReadsAsManyDigitsAsThereAre) {
    EXPECT_EQ(toReal("0." + std::string(100'000, '3')), 1.0 / 3.0);
    EXPECT_EQ(toReal("9007199254740993." + std::string(1'000, '0') + "1"), 9007199254740994.0);
}

}  // namespace
}  // namespace jsonlib::json::detail
