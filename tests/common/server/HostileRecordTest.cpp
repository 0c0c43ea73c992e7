#include <common/server/Commit.h>
#include <common/server/CommitNumber.h>
#include <common/server/FetchData.h>
#include <common/server/Reference.h>
#include <common/server/RepoData.h>
#include <common/server/ServerAnswer.h>
#include <tests/common/server/Records.h>

#include <gmock/gmock.h>

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

// Records come from a server: whatever they hold ends in a value, in the error that belongs to it,
// or in the one exception for a text that ends inside a string.
namespace {

using qrv_test::array;
using qrv_test::missing;
using qrv_test::notAnObject;
using qrv_test::object;
using qrv_test::outcomeOf;
using qrv_test::wrongKind;

constexpr std::size_t million = 1'000'000;
constexpr std::size_t deeperThanAnyStack = 100'000;

std::string repeated(const std::string& text, std::size_t count) {
    std::string result;
    result.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i)
        result += text;
    return result;
}

std::string nested(std::size_t depth) {
    return std::string(depth, '[') + std::string(depth, ']');
}

template <class Call>
auto withText(Call call, const std::string& text) {
    return outcomeOf([&] { return call(OdString::fromNarrow(text)); });
}

TEST(HostileRecord, MayHoldAMillionElements) {
    const std::string hashes = "[" + repeated("\"h\",", million) + "]";
    const auto parents = common::deserializeParentHashes(array(hashes));
    ASSERT_TRUE(parents.hasValue());
    EXPECT_EQ(parents->size(), million);
}

TEST(HostileRecord, MayBeNestedDeeply) {
    const std::string deep = nested(deeperThanAnyStack);
    EXPECT_EQ(withText(common::deserializeRepoData, R"({"name":)" + deep + R"(,"id":"1"})"),
              wrongKind("string", "array", "name"));
    EXPECT_EQ(withText(common::deserializeRepoDatas, deep), notAnObject("array"));
    EXPECT_EQ(withText(common::deserializeReferences, R"([{"annotation":)" + deep + "}]"),
              "error: No commit hash found in reference.");
    EXPECT_EQ(withText(common::deserializeReferences,
                       R"([{"annotation":{"author":"a","date":)" + deep + "}}]"),
              wrongKind("real", "array", "date"));
    EXPECT_EQ(outcomeOf([&] {
                  return common::deserializeFetchData(object(R"({"repository":)" + deep + "}"));
              }),
              wrongKind("object", "array", "repository"));
    // The annotation is copied before it is read.
    EXPECT_EQ(outcomeOf([&] {
                  return common::deserializeCommit(object(R"({"annotation":{"x":)" + deep + "}}"));
              }),
              missing("annotation", "author"));
}

TEST(HostileRecord, IsNoJsonWhenItsBracketsStayOpen) {
    for (const char* bracket : {"[", "{\"a\":", "[{\"a\":"}) {
        const std::string open = repeated(bracket, deeperThanAnyStack);
        EXPECT_EQ(withText(common::deserializeReferences, open), wrongKind("array", "null"));
        EXPECT_EQ(withText(common::deserializeServerVersion, open), wrongKind("object", "null"));
    }
}

TEST(HostileRecord, ThatEndsInsideAStringThrows) {
    const OdString texts[] = {L"\"", L"[\"", L"{\"name", L"{\"name\":\"r\",\"id\":\"1"};
    for (const OdString& text : texts) {
        EXPECT_THROW(static_cast<void>(common::deserializeRepoData(text)), std::length_error);
        EXPECT_THROW(static_cast<void>(common::deserializeRepoDatas(text)), std::length_error);
        EXPECT_THROW(static_cast<void>(common::deserializeReferences(text)), std::length_error);
        EXPECT_THROW(static_cast<void>(common::deserializeServerVersion(text)), std::length_error);
    }
}

TEST(HostileRecord, NamesAnEndlessTypeWhole) {
    const std::string type(million, '%');
    EXPECT_EQ(outcomeOf([&] {
                  return common::deserializeReference(
                      object(R"({"name":"n","commitHash":"c","refType":")" + type + "\"}"));
              }),
              "error: Unsupported type: " + type);
}

TEST(HostileRecord, KeepsTextsThatNoFileSystemHas) {
    const auto file = common::deserializeRepoFile(
        object(R"({"path":"../\u0000\ud800","storagePath":"po:../../x","previousPath":"/"})"));
    ASSERT_TRUE(file.hasValue());
    EXPECT_EQ(file->current.path.toWide(), std::wstring(L"../\0", 4) + wchar_t{0xD800});
    EXPECT_EQ(file->current.storagePath, L"po:../../x");
    EXPECT_EQ(file->previous->path, L"/");
}

TEST(HostileRecord, TakesTheLastOfRepeatedMembers) {
    const auto version =
        common::deserializeServerVersion(L"{\"commandVersion\":1,\"commandVersion\":\"2\"}");
    ASSERT_TRUE(version.hasValue());
    EXPECT_EQ(*version, L"2");
}

}  // namespace
