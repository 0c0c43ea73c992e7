#include <common/json/Reader.h>
#include <tests/common/json/JsonText.h>

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

namespace jsonlib::json {
namespace {

using qrv_test::readJson;
using qrv_test::shown;

Value number(std::uint64_t integer) {
    return integer;
}

TEST(Reader, Accepts) {
    const std::vector<std::pair<std::wstring, Value>> accepted = {
        {L"{}", Object()},
        {L"[]", Array()},
        {L"\"\"", L""},
        {L"true", true},
        {L"false", false},
        {L"null", Value()},
        {L"7", number(7)},
        {L" \t\n\v\f\r7", number(7)},
        {L"[1,2,]", Array{1, 2}},
        {L"[1 , 2 , ]", Array{1, 2}},
        {L"[ ]", Array()},
        {L"{ }", Object()},
        {L"{\"a\":1,}", Object{{L"a", 1}}},
        {L"{ \"a\" : 1 , }", Object{{L"a", 1}}},
        {L"{\"b\":1,\"a\":2}", Object{{L"a", 2}, {L"b", 1}}},
        {L"{\"a\":1,\"a\":2}", Object{{L"a", 2}}},
        {L"{\"a\":[1,{}],\"b\":3,\"a\":null}", Object{{L"a", Value()}, {L"b", 3}}},
        {L"{\"\":1}", Object{{L"", 1}}},
        {L"[true,false,null]", Array{true, false, Value()}},
        {L"[[],[[]],{\"a\":{}}]", Array{Array(), Array{Array()}, Object{{L"a", Object()}}}},
        // A keyword ends with its last letter; what follows the first value is not looked at.
        {L"nullx", Value()},
        {L"truefalse", true},
        {L"{\"a\":1} trailing", Object{{L"a", 1}}},
        {L"[]]", Array()},
        {L"012", number(0)},
        {L"1\"", number(1)},
    };
    for (const auto& [text, value] : accepted)
        EXPECT_EQ(readJson(text), value) << shown(text);
}

// clang-format off
const std::vector<std::wstring> refused = {
    L"", L" ", L"\n", L",", L":", L"]", L"}", L"[", L"{", L"[1", L"[1,", L"{\"a\"", L"{\"a\":",
    L"{\"a\":1", L"{\"a\":1,", L"[,]", L"{,}", L"[,1]", L"{,\"a\":1}", L"[1,,2]", L"[1,,]",
    L"{\"a\":1,,}", L"{\"a\":1,,\"b\":2}", L"[1 2]", L"{\"a\":1 \"b\":2}", L"{\"a\" 1}",
    L"{\"a\"::1}", L"{\"a\":}", L"{:1}", L"{a:1}", L"{1:1}", L"{null:1}", L"{\"a\":1]", L"[1}",
    L"[:]", L"[1:2]", L"{[]:1}", L"{\"a\"}", L"{\"a\",1}", L"[012]", L"[nullx]", L"[truefalse]",
    L"n", L"nul", L"nulL", L"Null", L"NULL", L"t", L"tru", L"True", L"f", L"fals", L"falsy", L"x",
    L"'a'", L"~", L"\x7f", L"\xa0" L"1", L"\xe9", L"\x2028" L"1", L"\xfeff" L"{}", L"\xffff",
    L"/**/1", L"//\n1", L"[1,\\\"a\"]", L"\\u0031", L"\x01" L"1", L"\b1", L"undefined", L"NaN",
    L"Infinity", L"+1", L".5", L"(1)",
};
// clang-format on

TEST(Reader, Refuses) {
    for (const std::wstring& text : refused)
        EXPECT_EQ(readJson(text), std::nullopt) << shown(text);
}

TEST(Reader, TakesANulBetweenTokensForTheEnd) {
    EXPECT_EQ(readJson(std::wstring(L"\0"
                                    L"1",
                                    2)),
              std::nullopt);
    EXPECT_EQ(readJson(std::wstring(L"[1\0]", 4)), std::nullopt);
    EXPECT_EQ(readJson(std::wstring(L"[1,\0]", 5)), std::nullopt);
    EXPECT_EQ(readJson(std::wstring(L"{\0}", 3)), std::nullopt);
    EXPECT_EQ(readJson(std::wstring(L"nu\0ll", 5)), std::nullopt);
    EXPECT_EQ(readJson(std::wstring(L"[1]\0x", 5)), Value(Array{1}));
}

TEST(Reader, ReadsNoFurtherThanTheEndItIsGiven) {
    const std::wstring text = L"[12]";
    Value value;
    EXPECT_FALSE(read(text.data(), text.data() + 3, value));
    EXPECT_TRUE(read(text.data() + 1, text.data() + 2, value));
    EXPECT_EQ(value, number(1));
    EXPECT_FALSE(read(nullptr, nullptr, value));
}

TEST(Reader, LeavesTheValueAloneWhenItRefuses) {
    for (const std::wstring text : {L"", L"[1,2", L"{\"a\":1,\"b\":x}", L"tru"}) {
        Value value = Object{{L"kept", 1}};
        EXPECT_FALSE(read(text.data(), text.data() + text.size(), value)) << shown(text);
        EXPECT_EQ(value, Value(Object{{L"kept", 1}})) << shown(text);
    }
}

TEST(Reader, ReplacesTheValueWhenItAccepts) {
    const std::wstring text = L"[]";
    Value value = Object{{L"gone", 1}};
    EXPECT_TRUE(read(text.data(), text.data() + text.size(), value));
    EXPECT_EQ(value, Value(Array()));
}

}  // namespace
}  // namespace jsonlib::json
