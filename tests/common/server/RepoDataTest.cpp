#include <common/server/RepoData.h>
#include <tests/common/server/Records.h>

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using common::deserializeRepoData;
using common::deserializeRepoDatas;
using common::RepoData;
using qrv_test::Kind;
using qrv_test::kinds;
using qrv_test::missing;
using qrv_test::notAnObject;
using qrv_test::outcomeOf;
using qrv_test::wrongKind;

std::string outcome(const std::string& text) {
    return outcomeOf([&] { return deserializeRepoData(OdString::fromNarrow(text)); });
}

std::string listOutcome(const std::string& text) {
    return outcomeOf([&] { return deserializeRepoDatas(OdString::fromNarrow(text)); });
}

TEST(RepoData, TakesNameAndIdAndLeavesTheDescriptionEmpty) {
    const Expected<RepoData> repository = deserializeRepoData(
        OdString(L"{\"description\":\"d\",\"id\":\"7\",\"name\":\"B\u00FCro\",\"x\":[]}"));
    ASSERT_TRUE(repository.hasValue());
    EXPECT_EQ(repository->name, L"B\u00FCro");
    EXPECT_EQ(repository->id, L"7");
    EXPECT_EQ(repository->description, L"");
}

TEST(RepoData, RefusesEachFaultWithItsText) {
    const struct {
        const char* text;
        std::string outcome;
    } cases[] = {
        {R"({})", missing("repo data", "name")},
        {R"({"id":7})", missing("repo data", "name")},
        {R"({"Name":"r","id":"1"})", missing("repo data", "name")},
        {R"({"name":7})", missing("repo data", "id")},
        {R"({"name":7,"id":7})", wrongKind("string", "int", "name")},
        {R"({"name":"r","id":7})", wrongKind("string", "int", "id")},
        {R"({"name":"r","id":null})", wrongKind("string", "null", "id")},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(outcome(text), expected) << text;
}

TEST(RepoData, TakesNoOtherKindThanATextForAMember) {
    for (const Kind& kind : kinds) {
        const bool isText = std::string(kind.name) == "string";
        const std::string value = kind.text;
        EXPECT_EQ(outcome(R"({"id":"1","name":)" + value + "}"),
                  isText ? "a value" : wrongKind("string", kind.name, "name"));
        EXPECT_EQ(outcome(R"({"name":"r","id":)" + value + "}"),
                  isText ? "a value" : wrongKind("string", kind.name, "id"));
    }
}

TEST(RepoData, IsOnlyReadFromAnObject) {
    for (const Kind& kind : kinds) {
        const bool isObject = std::string(kind.name) == "object";
        EXPECT_EQ(outcome(kind.text),
                  isObject ? missing("repo data", "name") : wrongKind("object", kind.name));
    }
}

TEST(RepoData, ReportsTextThatIsNoJsonAsNull) {
    for (const char* text : {"", " ", "repo", "{", R"({"name":"r","id":"1")", "[1,", "\\"})
        EXPECT_EQ(outcome(text), wrongKind("object", "null")) << text;
}

TEST(RepoData, DoesNotLookBehindTheFirstValue) {
    EXPECT_EQ(outcome(R"({"name":"r","id":"1"} and more)"), "a value");
}

TEST(RepoData, KeepsANulInsideAText) {
    const Expected<RepoData> repository =
        deserializeRepoData(OdString(L"{\"id\":\"1\",\"name\":\"a\\u0000b\"}"));
    ASSERT_TRUE(repository.hasValue());
    EXPECT_EQ(repository->name.toWide(), std::wstring(L"a\0b", 3));
}

TEST(RepoDatas, KeepTheOrderOfTheText) {
    const Expected<std::vector<RepoData>> repositories = deserializeRepoDatas(
        OdString(L"[{\"name\":\"b\",\"id\":\"2\"},{\"name\":\"a\",\"id\":\"1\"}]"));
    ASSERT_TRUE(repositories.hasValue());
    ASSERT_EQ(repositories->size(), 2U);
    EXPECT_EQ((*repositories)[0].name, L"b");
    EXPECT_EQ((*repositories)[0].id, L"2");
    EXPECT_EQ((*repositories)[1].name, L"a");
    EXPECT_EQ((*repositories)[1].id, L"1");
}

TEST(RepoDatas, AreEmptyForAnEmptyArray) {
    const Expected<std::vector<RepoData>> repositories = deserializeRepoDatas(OdString(L"[]"));
    ASSERT_TRUE(repositories.hasValue());
    EXPECT_TRUE(repositories->empty());
}

TEST(RepoDatas, EndAtTheFirstBadElement) {
    const std::string good = R"({"name":"r","id":"1"})";
    const struct {
        std::string text;
        std::string outcome;
    } cases[] = {
        {"[" + good + ",{},1]", missing("repo data", "name")},
        {"[" + good + ",1,{}]", notAnObject("int")},
        {"[" + good + R"(,{"name":"x"},{"name":1,"id":""}])", missing("repo data", "id")},
        {"[" + good + R"(,{"name":1,"id":""},{}])", wrongKind("string", "int", "name")},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(listOutcome(text), expected) << text;
}

TEST(RepoDatas, TakeObjectsOnly) {
    for (const Kind& kind : kinds) {
        const bool isObject = std::string(kind.name) == "object";
        EXPECT_EQ(listOutcome("[" + std::string(kind.text) + "]"),
                  isObject ? missing("repo data", "name") : notAnObject(kind.name));
    }
}

TEST(RepoDatas, AreOnlyReadFromAnArray) {
    for (const Kind& kind : kinds) {
        const bool isArray = std::string(kind.name) == "array";
        EXPECT_EQ(listOutcome(kind.text),
                  isArray ? notAnObject("array") : wrongKind("array", kind.name));
    }
    EXPECT_EQ(listOutcome("no json"), wrongKind("array", "null"));
}

}  // namespace
