#include <common/json/Reader.h>
#include <tests/common/json/JsonText.h>

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace jsonlib::json {
namespace {

using qrv_test::readJson;
using qrv_test::shown;

std::wstring units(std::initializer_list<unsigned> codes) {
    std::wstring text;
    for (const unsigned code : codes)
        text += static_cast<wchar_t>(code);
    return text;
}

TEST(ReaderStrings, AreTaken) {
    const std::vector<std::pair<std::wstring, std::wstring>> accepted = {
        {L"plain", L"plain"},
        {L"\\n\\t\\r\\f\\b\\\"\\\\\\/", L"\n\t\r\f\b\"\\/"},
        {L"\\u00e9", units({0xE9})},
        {L"\\u00E9x", units({0xE9, 'x'})},
        {L"\\uaBcD\\uEf09", units({0xABCD, 0xEF09})},
        {L"\\u0000", units({0})},
        {L"a\\u0041b", L"aAb"},
        // Each escape is one unit: pairs are neither combined nor demanded.
        {L"\\ud83d\\ude00", units({0xD83D, 0xDE00})},
        {L"\\ud83d", units({0xD83D})},
        {L"\\ude00\\ud83d", units({0xDE00, 0xD83D})},
        {L"\\u00410", L"A0"},
        // Raw control characters and line breaks are characters like any other.
        {L"a\nb\r\tc\x01\x7f", L"a\nb\r\tc\x01\x7f"},
        {units({0xE9, 0x4E2D, 0xFFFF, 0xDC80}), units({0xE9, 0x4E2D, 0xFFFF, 0xDC80})},
        {units({'a', 0, 'b'}), units({'a', 0, 'b'})},
        {L"{[:,]}", L"{[:,]}"},
    };
    for (const auto& [inner, value] : accepted)
        EXPECT_EQ(readJson(L"\"" + inner + L"\""), Value(value)) << shown(inner);
}

#if WCHAR_MAX > 0xFFFF
TEST(ReaderStrings, AreSplitIntoUnits) {
    EXPECT_EQ(readJson(L"\"a\U0001F600b\""), Value(units({'a', 0xD83D, 0xDE00, 'b'})));
    EXPECT_EQ(readJson(L"\"\U00010000\U0010FFFF\""),
              Value(units({0xD800, 0xDC00, 0xDBFF, 0xDFFF})));
    EXPECT_EQ(readJson(L"\"" + units({0x110000, 0xFFFFFFFF}) + L"\""),
              Value(units({0xFFFD, 0xFFFD})));
    EXPECT_EQ(readJson(L"\U0001F600"), std::nullopt);
}
#endif

TEST(ReaderStrings, OfEveryLengthEndAtTheirQuote) {
    for (std::size_t length = 0; length < 70; ++length) {
        const std::wstring plain(length, L'a');
        EXPECT_EQ(readJson(L"\"" + plain + L"\"" + plain), Value(plain)) << length;
        for (std::size_t place = 0; place < length; ++place) {
            std::wstring escaped = plain;
            escaped.replace(place, 1, L"\\n");
            std::wstring expected = plain;
            expected[place] = L'\n';
            EXPECT_EQ(readJson(L"\"" + escaped + L"\""), Value(expected)) << length << " " << place;
        }
    }
}

TEST(ReaderStrings, AreKeysByTheSameRules) {
    EXPECT_EQ(readJson(L"{\"\\u0061\\n\":1}"), Value(Object{{L"a\n", 1}}));
    EXPECT_EQ(readJson(L"{\"a\":1,\"\\u0061\":2}"), Value(Object{{L"a", 2}}));
}

TEST(ReaderStrings, WithWrongEscapesAreRefused) {
    for (const std::wstring inner : {L"\\x",
                                     L"\\a",
                                     L"\\'",
                                     L"\\0",
                                     L"\\U0041",
                                     L"\\N",
                                     L"\\ ",
                                     L"\\\n",
                                     L"\\u",
                                     L"\\u1",
                                     L"\\u12",
                                     L"\\u123",
                                     L"\\u123g",
                                     L"\\u123G",
                                     L"\\u12 4",
                                     L"\\u-123",
                                     L"\\u+123",
                                     L"\\u\\u0041",
                                     L"\\u00\xe9"
                                     L"0",
                                     L"\\u123/",
                                     L"\\u123:",
                                     L"\\u123@",
                                     L"\\u123`"}) {
        EXPECT_EQ(readJson(L"\"" + inner + L"\""), std::nullopt) << shown(inner);
        EXPECT_EQ(readJson(L"{\"" + inner + L"\":1}"), std::nullopt) << shown(inner);
    }
}

TEST(ReaderStrings, CutOffInsideAnEscapeAreRefused) {
    for (const std::wstring text :
         {L"\"\\", L"\"a\\", L"\"\\u", L"\"\\u1", L"\"\\u12", L"\"\\u123", L"[\"\\", L"{\"\\u00"})
        EXPECT_EQ(readJson(text), std::nullopt) << shown(text);
}

TEST(ReaderStrings, WithoutAnEndAreALengthFailure) {
    for (const std::wstring text :
         {L"\"", L"\"a", L"[\"", L"{\"", L"{\"a", L"{\"a\":\"b", L"\"\\n", L"\"\\u0041", L"\"a\\\"",
          L"\"\xe9", L"[\"a\",\"b]", L"{\"a\" \"b", L"[1 \"b", L"[true\"", L"{\"a\":1 \"b"}) {
        Value value = L"kept";
        EXPECT_THROW(read(text.data(), text.data() + text.size(), value), std::length_error)
            << shown(text);
        EXPECT_EQ(value, Value(L"kept")) << shown(text);
    }
}

TEST(ReaderStrings, FailByTheFirstMistakeInTheText) {
    EXPECT_EQ(readJson(L"[x,\"endless"), std::nullopt);
    EXPECT_EQ(readJson(L"\"\\xendless"), std::nullopt);
    EXPECT_THROW(readJson(L"[\"endless,\\n x"), std::length_error);
}

}  // namespace
}  // namespace jsonlib::json
