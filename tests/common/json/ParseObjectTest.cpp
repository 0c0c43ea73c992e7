#include <common/json/JsonParseError.h>
#include <common/json/ParseObjectInternal.h>

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>

namespace common {
namespace {

using jsonlib::json::Object;
using jsonlib::json::Value;

TEST(ParseObject, GivesTheObject) {
    EXPECT_EQ(parseObject(L"{\"a\":[1]} trailing"), (Object{{L"a", jsonlib::json::Array{1}}}));
}

TEST(ParseObject, TakesTheWholeTextWithItsNuls) {
    const OdString text(std::wstring(L"{\"a\":\"b\0c\"}", 11));
    EXPECT_EQ(parseObject(text), (Object{{L"a", Value(std::wstring(L"b\0c", 3))}}));
}

TEST(ParseObject, RefusesWhatIsNotJson) {
    for (const wchar_t* text : {L"", L" ", L"{", L"{\"a\"}", L"x"}) {
        try {
            parseObject(text);
            ADD_FAILURE() << "accepted " << text;
        } catch (const JsonParseError&) {
            ADD_FAILURE() << "the wrong error for " << text;
        } catch (const OdError& error) {
            EXPECT_STREQ(error.what(), "Unable to parse json, please check if syntax is valid");
        }
    }
}

TEST(ParseObject, RefusesJsonOfAnotherType) {
    const std::pair<const wchar_t*, const char*> cases[] = {
        {L"[]", "Error:\tExpected json type 'object', found 'array'"},
        {L"\"{}\"", "Error:\tExpected json type 'object', found 'string'"},
        {L"true", "Error:\tExpected json type 'object', found 'bool'"},
        {L"1", "Error:\tExpected json type 'object', found 'int'"},
        {L"1.", "Error:\tExpected json type 'object', found 'real'"},
        {L"null", "Error:\tExpected json type 'object', found 'null'"},
    };
    for (const auto& [text, message] : cases) {
        try {
            parseObject(text);
            ADD_FAILURE() << "accepted " << text;
        } catch (const JsonParseError& error) {
            EXPECT_STREQ(error.what(), message);
        }
    }
}

TEST(ParseObject, LetsTheFailureOfAnEndlessStringPass) {
    EXPECT_THROW(parseObject(L"{\"a\":\"b"), std::length_error);
}

}  // namespace
}  // namespace common
