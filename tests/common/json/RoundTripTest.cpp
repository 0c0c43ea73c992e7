#include <common/json/Reader.h>
#include <common/json/Writer.h>
#include <tests/common/json/JsonText.h>
#include <tests/common/json/RandomValue.h>

#include <gmock/gmock.h>

#include <bit>
#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace jsonlib::json {
namespace {

using qrv_test::readJson;
using qrv_test::shown;

TEST(RoundTrip, OfRandomValuesGivesThemBack) {
    std::mt19937_64 random(20240305);
    for (int round = 0; round < 5'000; ++round) {
        const Value value = qrv_test::randomValue(random, 6);
        const std::wstring text = write(value);
        const std::optional<Value> again = readJson(text);
        ASSERT_EQ(again, value) << shown(text);
        ASSERT_EQ(write(*again), text);
        const Value copy = value;
        ASSERT_EQ(copy, value) << shown(text);
        ASSERT_EQ(write(copy), text);
    }
}

TEST(RoundTrip, IsStableFromTheFirstWriting) {
    for (const std::wstring text :
         {L"[1,2,]", L"{\"b\":1,\"a\":2,}", L"-0", L"-0.", L"1e-300", L"0.30000000000000004",
          L"123456789.123456789", L"[18446744073709551616,-9223372036854775809]",
          L"\"\\ud83d\\u0000\x7f\"", L" {\"a\" : {}} x"}) {
        const std::optional<Value> value = readJson(text);
        ASSERT_TRUE(value.has_value()) << shown(text);
        const std::wstring first = write(*value);
        const std::optional<Value> again = readJson(first);
        ASSERT_TRUE(again.has_value()) << shown(first);
        EXPECT_EQ(write(*again), first);
    }
}

TEST(RoundTrip, KeepsEveryRealFromOneHalfUp) {
    std::mt19937_64 random(20240305);
    for (int round = 0; round < 20'000; ++round) {
        const double real = std::bit_cast<double>(random());
        if (!std::isfinite(real))
            continue;
        const std::wstring text = write(real);
        const std::optional<Value> again = readJson(text);
        ASSERT_TRUE(again.has_value()) << shown(text);
        ASSERT_EQ(write(*again), text);
        const bool isKept = std::fabs(real) >= 0.5;
        ASSERT_TRUE(again->getReal() == real || !isKept) << shown(text);
    }
}

TEST(RoundTrip, OfAnInfiniteRealIsRefusedByTheReader) {
    const std::optional<Value> value = readJson(L"[1e999]");
    ASSERT_TRUE(value.has_value());
    EXPECT_EQ(readJson(write(*value)), std::nullopt);
}

TEST(RoundTrip, KeepsTheKindOfIntegers) {
    const std::optional<Value> value = readJson(write(Array{-5, std::uint64_t{5}}));
    ASSERT_TRUE(value.has_value());
    EXPECT_FALSE(value->getArray()[0].isUnsigned());
    EXPECT_TRUE(value->getArray()[1].isUnsigned());
}

}  // namespace
}  // namespace jsonlib::json
