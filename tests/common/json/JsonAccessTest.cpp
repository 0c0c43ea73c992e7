#include <common/json/JsonAccess.h>
#include <common/json/JsonParseError.h>

#include <gmock/gmock.h>

#include <functional>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

namespace common {
namespace {

using jsonlib::json::Array;
using jsonlib::json::Object;
using jsonlib::json::Value;
using jsonlib::json::Value_type;

const std::vector<std::string> typeNames = {"object", "array", "string", "bool",
                                            "int",    "real",  "null"};

Object oneOfEachKind() {
    return {{L"object", Object{{L"a", 1}}},
            {L"array", Array{1}},
            {L"string", L"text"},
            {L"bool", true},
            {L"int", -5},
            {L"real", 2.5},
            {L"null", Value()}};
}

/// The error's text, or nothing when there was none.
std::string complaint(const std::function<void()>& work) {
    try {
        work();
    } catch (const JsonParseError& error) {
        return error.description().toNarrow();
    }
    return "";
}

TEST(JsonAccess, GivesTheMemberOfTheNamedType) {
    const Object object = oneOfEachKind();
    EXPECT_EQ(&getValue(object, L"null", L""), &object.at(L"null"));
    EXPECT_EQ(&getObjectValue(object, L"object", L""), &object.at(L"object").getObject());
    EXPECT_EQ(&getArrayValue(object, L"array", L""), &object.at(L"array").getArray());
    EXPECT_EQ(getStringValue(object, L"string", L""), OdString(L"text"));
    EXPECT_EQ(getStringValue(object.at(L"string")), OdString(L"text"));
    EXPECT_EQ(getIntValue(object, L"int", L""), -5);
    EXPECT_EQ(getInt64Value(object, L"int", L""), -5);
    EXPECT_EQ(getUInt64Value(object, L"int", L""), 18446744073709551611u);
    EXPECT_TRUE(getBoolValue(object, L"bool", L""));
    EXPECT_EQ(getDoubleValue(object, L"real", L""), 2.5);
}

using Getter = std::function<void(const Object&, const OdString&, const OdString&)>;

struct TypedGetter {
    std::string type;
    Getter get;
};

const std::vector<TypedGetter> typedGetters = {
    {"object", [](auto& o, auto& k, auto& c) { getObjectValue(o, k, c); }},
    {"array", [](auto& o, auto& k, auto& c) { getArrayValue(o, k, c); }},
    {"string", [](auto& o, auto& k, auto& c) { getStringValue(o, k, c); }},
    {"int", [](auto& o, auto& k, auto& c) { getIntValue(o, k, c); }},
    {"int", [](auto& o, auto& k, auto& c) { getInt64Value(o, k, c); }},
    {"int", [](auto& o, auto& k, auto& c) { getUInt64Value(o, k, c); }},
    {"bool", [](auto& o, auto& k, auto& c) { getBoolValue(o, k, c); }},
    {"real", [](auto& o, auto& k, auto& c) { getDoubleValue(o, k, c); }},
};

TEST(JsonAccess, RefusesEveryOtherType) {
    const Object object = oneOfEachKind();
    for (const TypedGetter& typed : typedGetters) {
        const std::string& type = typed.type;
        for (const std::string& found : typeNames) {
            const std::string text =
                complaint([&] { typed.get(object, OdString::fromNarrow(found), L"repo file"); });
            EXPECT_EQ(text, found == type
                                ? ""
                                : "Error:\tExpected json type '" + type + "', found '" + found +
                                      "'\nContext:\trepo file\njson key:\t\"" + found + "\"")
                << type << " " << found;
        }
    }
}

TEST(JsonAccess, NamesAMissingKey) {
    for (const TypedGetter& typed : typedGetters) {
        EXPECT_EQ(complaint([&] { typed.get({}, L"hash", L"repo file"); }),
                  "Unable to find json key 'hash'\nContext:\trepo file\njson key:\t\"hash\"");
    }
    EXPECT_EQ(complaint([] { getValue({}, L"hash", L"repo file"); }),
              "Unable to find json key 'hash'\nContext:\trepo file\njson key:\t\"hash\"");
}

TEST(JsonAccess, LeavesOutTheLinesOfEmptyTexts) {
    EXPECT_EQ(complaint([] { getValue({}, L"x", L""); }),
              "Unable to find json key 'x'\njson key:\t\"x\"");
    EXPECT_EQ(complaint([] { getValue({}, L"", L"commit"); }),
              "Unable to find json key ''\nContext:\tcommit");
    EXPECT_EQ(complaint([] { getValue({}, L"", L""); }), "Unable to find json key ''");
}

TEST(JsonAccess, RefusesAValueThatIsNoString) {
    EXPECT_EQ(complaint([] { getStringValue(Value(1)); }),
              "Error:\tExpected json type 'string', found 'int'");
}

TEST(JsonAccess, TakesPlaceholdersInKeysAndContextsAsTheyAre) {
    EXPECT_EQ(complaint([] { getValue({}, L"%ls", L"%i"); }),
              "Unable to find json key '%ls'\nContext:\t%i\njson key:\t\"%ls\"");
}

TEST(JsonAccess, CutsIntegersToTheWidthAskedFor) {
    const Object object = {{L"wide", std::int64_t{4294967297}},
                           {L"minus", -1},
                           {L"largest", std::numeric_limits<std::uint64_t>::max()}};
    EXPECT_EQ(getIntValue(object, L"wide", L""), 1);
    EXPECT_EQ(getUInt64Value(object, L"minus", L""), 18446744073709551615u);
    EXPECT_EQ(getInt64Value(object, L"largest", L""), -1);
}

TEST(JsonAccess, TakesAWholeNumberForNoReal) {
    const Object object = {{L"date", 1}};
    EXPECT_EQ(complaint([&] { getDoubleValue(object, L"date", L"annotation"); }),
              "Error:\tExpected json type 'real', found 'int'\nContext:\tannotation\n"
              "json key:\t\"date\"");
}

TEST(JsonAccess, FindsKeysInTheirExactSpellingOnly) {
    const std::wstring withNul(L"a\0b", 3);
    const Object object = {{L"name", 1}, {withNul, 2}};
    EXPECT_TRUE(hasKey(object, L"name"));
    EXPECT_FALSE(hasKey(object, L"Name"));
    EXPECT_FALSE(hasKey(object, L"nam"));
    EXPECT_FALSE(hasKey(object, L"a"));
    EXPECT_TRUE(hasKey(object, withNul));
    EXPECT_EQ(getIntValue(object, withNul, L""), 2);
}

TEST(JsonAccess, ChecksATypeWithContextAndKey) {
    EXPECT_EQ(complaint([] { checkType(Value(1), Value_type::integer, L"c", L"k"); }), "");
    EXPECT_EQ(complaint([] { checkType(Value(1), Value_type::array, L"c", L"k"); }),
              "Error:\tExpected json type 'array', found 'int'\nContext:\tc\njson key:\t\"k\"");
    EXPECT_EQ(complaint([] { checkType(Value(), Value_type::object, L"", L""); }),
              "Error:\tExpected json type 'object', found 'null'");
}

TEST(JsonAccess, ComposesAnErrorWithoutThrowing) {
    const ErrorMessage error =
        composeMessage(Value(L"x"), Value_type::object, L"parsing json vector.");
    EXPECT_EQ(error.message.toNarrow(),
              "Encounterd 'object', found 'string. While parsing json vector.'");
    EXPECT_EQ(error.code, 0);
    EXPECT_EQ(composeMessage(Value(), Value_type::null, L"").message.toNarrow(),
              "Encounterd 'null', found 'null. While '");
}

TEST(JsonAccess, NamesTheTypes) {
    for (std::size_t type = 0; type < typeNames.size(); ++type)
        EXPECT_EQ(toString(static_cast<Value_type>(type)).toNarrow(), typeNames[type]);
    EXPECT_EQ(toString(static_cast<Value_type>(7)).toNarrow(), "unknown_type");
    EXPECT_EQ(toString(static_cast<Value_type>(-1)).toNarrow(), "unknown_type");
}

TEST(JsonParseError, IsAnErrorOfTheKernelThatCarriesItsText) {
    static_assert(std::is_base_of_v<OdError, JsonParseError>);
    static_assert(std::is_convertible_v<const OdString&, JsonParseError>);
    JsonParseError error(OdString(L"first"));
    JsonParseError copy = error;
    EXPECT_EQ(copy.description(), OdString(L"first"));
    copy = JsonParseError(OdString(L"second"));
    error = copy;
    EXPECT_EQ(error.description(), OdString(L"second"));
    const JsonParseError moved = std::move(copy);
    EXPECT_EQ(moved.description(), OdString(L"second"));
    EXPECT_STREQ(moved.what(), "second");
}

}  // namespace
}  // namespace common
