#include <common/json/Reader.h>
#include <tests/common/json/JsonText.h>

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace jsonlib::json {
namespace {

using qrv_test::readJson;
using qrv_test::shown;

TEST(ReaderNumbers, WithoutAMinusAreUnsigned) {
    const std::vector<std::pair<std::wstring, std::uint64_t>> cases = {
        {L"0", 0},
        {L"-0", 0},
        {L"1", 1},
        {L"10", 10},
        {L"9223372036854775808", 9223372036854775808u},
        {L"18446744073709551614", 18446744073709551614u},
        {L"18446744073709551615", 18446744073709551615u},
        {L"18446744073709551616", 18446744073709551615u},
        {L"18446744073709551620", 18446744073709551615u},
        {L"99999999999999999999999", 18446744073709551615u},
        {std::wstring(10'000, L'9'), 18446744073709551615u},
    };
    for (const auto& [text, integer] : cases) {
        const std::optional<Value> value = readJson(text);
        ASSERT_TRUE(value.has_value()) << shown(text);
        EXPECT_EQ(*value, Value(integer)) << shown(text);
        EXPECT_TRUE(value->isUnsigned()) << shown(text);
    }
}

TEST(ReaderNumbers, WithAMinusAreSigned) {
    constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();
    const std::vector<std::pair<std::wstring, std::int64_t>> cases = {
        {L"-5", -5},
        {L"-10", -10},
        {L"-9223372036854775807", smallest + 1},
        {L"-9223372036854775808", smallest},
        {L"-9223372036854775809", smallest},
        {L"-99999999999999999999999", smallest},
    };
    for (const auto& [text, integer] : cases) {
        const std::optional<Value> value = readJson(text);
        ASSERT_TRUE(value.has_value()) << shown(text);
        EXPECT_EQ(*value, Value(integer)) << shown(text);
        EXPECT_FALSE(value->isUnsigned()) << shown(text);
    }
}

TEST(ReaderNumbers, WithAFractionOrAnExponentAreReal) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const std::vector<std::pair<std::wstring, double>> cases = {
        {L"1.", 1.0},
        {L"0.", 0.0},
        {L"-0.5", -0.5},
        {L"-0.", -0.0},
        {L"0.1", 0.1},
        {L"1.5e3", 1500.0},
        {L"1.e2", 100.0},
        {L"0.e1", 0.0},
        {L"0e0", 0.0},
        {L"-0e1", -0.0},
        {L"1e5", 100000.0},
        {L"1E5", 100000.0},
        {L"1e+5", 100000.0},
        {L"25e-1", 2.5},
        {L"1e007", 1e7},
        {L"9007199254740993.0", 9007199254740992.0},
        {L"1e400", infinity},
        {L"-1e400", -infinity},
        {L"1e-400", 0.0},
        {L"-1e-400", -0.0},
        {L"0e400", 0.0},
        {L"1e99999999999999999999", infinity},
        {L"1e-99999999999999999999", 0.0},
        {L"5e-324", 5e-324},
        {L"0." + std::wstring(400, L'0') + L"1e401", 1.0},
        {L"1" + std::wstring(400, L'0') + L".0e-400", 1.0},
        {L"1" + std::wstring(400, L'0') + L".0", infinity},
        {L"0." + std::wstring(400, L'0') + L"1", 0.0},
    };
    for (const auto& [text, real] : cases) {
        const std::optional<Value> value = readJson(text);
        ASSERT_TRUE(value.has_value()) << shown(text);
        ASSERT_EQ(value->type(), Value_type::real) << shown(text);
        EXPECT_EQ(value->getReal(), real) << shown(text);
        EXPECT_EQ(std::signbit(value->getReal()), std::signbit(real)) << shown(text);
    }
}

TEST(ReaderNumbers, ThatBreakOffAreRefused) {
    for (const std::wstring text :
         {L"-",       L"--1",     L"-a",      L"- 1",    L"-.5",  L"-e1",  L"1e",
          L"1e+",     L"1e-",     L"1ex",     L"1e.5",   L"1.e",  L"1.5e", L"0e",
          L"[1.2.3]", L"[1e1.5]", L"[1e1e1]", L"[0x10]", L"[1a]", L"[00]", L"[-01]",
          L"[1-2]",   L"[1,5-]",  L"[.1]",    L"[+1]",   L"[1+1]"})
        EXPECT_EQ(readJson(text), std::nullopt) << shown(text);
}

TEST(ReaderNumbers, EndWhereTheirCharactersEnd) {
    EXPECT_EQ(readJson(L"[1,-2,3.5]"), Value(Array{1, -2, 3.5}));
    EXPECT_EQ(readJson(L"{\"a\":1}"), Value(Object{{L"a", 1}}));
    EXPECT_EQ(readJson(L"1x"), Value(1));
    EXPECT_EQ(readJson(L"1.5.5"), Value(1.5));
    EXPECT_EQ(readJson(L"1\xff11"), Value(1));
}

}  // namespace
}  // namespace jsonlib::json
