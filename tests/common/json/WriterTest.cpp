#include <common/json/Writer.h>
#include <tests/common/json/JsonText.h>

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace jsonlib::json {
namespace {

using qrv_test::shown;

TEST(Writer, IndentsMembersAndElements) {
    const Value value = Object{{L"b", Array{1, L"two", Object{{L"x", Value()}}}},
                               {L"a", true},
                               {L"empty", Array()},
                               {L"none", Object()}};
    EXPECT_EQ(write(value),
              L"{\n"
              L"    \"a\" : true,\n"
              L"    \"b\" : [\n"
              L"        1,\n"
              L"        \"two\",\n"
              L"        {\n"
              L"            \"x\" : null\n"
              L"        }\n"
              L"    ],\n"
              L"    \"empty\" : [\n"
              L"    ],\n"
              L"    \"none\" : {\n"
              L"    }\n"
              L"}");
}

TEST(Writer, WritesEmptyContainersOnTwoLines) {
    EXPECT_EQ(write(Object()), L"{\n}");
    EXPECT_EQ(write(Array()), L"[\n]");
    EXPECT_EQ(write(Array{Array{Array()}}), L"[\n    [\n        [\n        ]\n    ]\n]");
}

TEST(Writer, WritesLeavesAlone) {
    const std::vector<std::pair<Value, std::wstring>> cases = {
        {Value(), L"null"},
        {true, L"true"},
        {false, L"false"},
        {L"", L"\"\""},
        {0, L"0"},
        {-5, L"-5"},
        {std::numeric_limits<std::int64_t>::min(), L"-9223372036854775808"},
        {std::numeric_limits<std::int64_t>::max(), L"9223372036854775807"},
        {std::numeric_limits<std::uint64_t>::max(), L"18446744073709551615"},
        {0.1, L"0.1000000000000000"},
        {1.5, L"1.5000000000000000"},
        {0.0, L"0.0000000000000000"},
        {-0.0, L"-0.0000000000000000"},
        {-2.25, L"-2.2500000000000000"},
        {1e5, L"100000.0000000000000000"},
        {1e-17, L"0.0000000000000000"},
        {1e22, L"10000000000000000000000.0000000000000000"},
        {std::numeric_limits<double>::infinity(), L"inf"},
        {-std::numeric_limits<double>::infinity(), L"-inf"},
        {std::nan(""), L"nan"},
        {-std::nan(""), L"-nan"},
    };
    for (const auto& [value, text] : cases)
        EXPECT_EQ(write(value), text) << shown(text);
}

TEST(Writer, WritesTheLargestRealWithAllItsDigits) {
    const std::wstring text = write(-std::numeric_limits<double>::max());
    EXPECT_EQ(text.size(), 1u + 309u + 1u + 16u);
    EXPECT_EQ(text.substr(0, 18), L"-17976931348623157");
    EXPECT_EQ(text.substr(310), L".0000000000000000");
}

TEST(Writer, WritesLongArraysOfUnequalElements) {
    Array array;
    std::wstring text = L"[\n";
    for (std::size_t index = 0; index < 5'000; ++index) {
        const std::wstring element(index % 500 == 499 ? 100'000 : index % 7, L'x');
        array.emplace_back(element);
        text += (index == 0 ? L"    \"" : L",\n    \"") + element + L"\"";
    }
    EXPECT_TRUE(write(array) == text + L"\n]");
}

TEST(Writer, EscapesInStringsAndKeys) {
    EXPECT_EQ(write(L"\"\\\b\f\n\r\t/'"), L"\"\\\"\\\\\\b\\f\\n\\r\\t/'\"");
    EXPECT_EQ(write(std::wstring(L"a\0b", 3)), L"\"a\\u0000b\"");
    EXPECT_EQ(write(L"\x01"), L"\"\\u0001\"");
    EXPECT_EQ(write(Object{{L"a\nb", 1}}), L"{\n    \"a\\nb\" : 1\n}");
}

TEST(Writer, EscapesAtEveryPlaceOfATextOfAnyLength) {
    for (std::size_t length = 1; length < 50; ++length) {
        for (std::size_t place = 0; place < length; ++place) {
            std::wstring text(length, L'a');
            text[place] = L'\n';
            std::wstring escaped(length, L'a');
            escaped.replace(place, 1, L"\\n");
            ASSERT_EQ(write(text), L"\"" + escaped + L"\"") << length << " " << place;
        }
    }
}

TEST(Writer, EscapesWhatIsNotPrintable) {
    // First and last unit of each stretch that is written as it stands.
    const std::vector<std::pair<unsigned, unsigned>> printable = {
        {0x20, 0x7E}, {0xA0, 0x2027}, {0x202A, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD},
    };
    const std::wstring shortEscapes = L"\"\\\b\f\n\r\t";
    for (unsigned code = 0; code <= 0xFFFF; ++code) {
        const wchar_t unit = static_cast<wchar_t>(code);
        if (shortEscapes.find(unit) != std::wstring::npos)
            continue;
        bool isPrintable = false;
        for (const auto& [first, last] : printable)
            isPrintable |= first <= code && code <= last;
        wchar_t escape[8];
        std::swprintf(escape, 8, L"\\u%04X", code);
        const std::wstring inner = isPrintable ? std::wstring(1, unit) : std::wstring(escape);
        ASSERT_EQ(write(std::wstring(1, unit)), L"\"" + inner + L"\"") << code;
    }
}

#if WCHAR_MAX > 0xFFFF
TEST(Writer, EscapesWideCharactersAsPairs) {
    EXPECT_EQ(write(L"\U0001F600"), L"\"\\uD83D\\uDE00\"");
    EXPECT_EQ(write(L"\U00010000\U0010FFFF"), L"\"\\uD800\\uDC00\\uDBFF\\uDFFF\"");
    EXPECT_EQ(write(std::wstring(1, static_cast<wchar_t>(0x110000))), L"\"\xFFFD\"");
}

// Keys are as the map of an object has them.
TEST(Writer, EscapesWideCharactersOfKeysAsPairs) {
    const std::wstring beyond(1, static_cast<wchar_t>(0x110000));
    EXPECT_EQ(write(Object{{L"\U0001F600", 1}}), L"{\n    \"\\uD83D\\uDE00\" : 1\n}");
    EXPECT_EQ(write(Object{{beyond, 1}}), L"{\n    \"\\uFFFD\" : 1\n}");
}
#endif

TEST(Writer, LeavesTheValueAsItWas) {
    const Value value = Array{Object{{L"a", L"b"}}, 1.5};
    const Value before = value;
    EXPECT_EQ(write(value), write(value));
    EXPECT_EQ(value, before);
}

}  // namespace
}  // namespace jsonlib::json
