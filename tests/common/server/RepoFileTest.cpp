#include <common/server/Commit.h>
#include <tests/common/server/Records.h>

#include <gmock/gmock.h>

#include <string>

namespace {

using common::CommitFile;
using common::deserializeRepoFile;
using qrv_test::Kind;
using qrv_test::kinds;
using qrv_test::missing;
using qrv_test::object;
using qrv_test::outcomeOf;
using qrv_test::wrongKind;

std::string outcome(const std::string& text) {
    return outcomeOf([&] { return deserializeRepoFile(object(text)); });
}

TEST(RepoFileRecord, HasPathAndStoragePath) {
    const Expected<CommitFile> file =
        deserializeRepoFile(object(R"({"path":"a/b.dwg","storagePath":"tf:b#2"})"));
    ASSERT_TRUE(file.hasValue());
    EXPECT_EQ(file->current.path, L"a/b.dwg");
    EXPECT_EQ(file->current.storagePath, L"tf:b#2");
    EXPECT_EQ(file->previous, nullptr);
}

TEST(RepoFileRecord, HasThePreviousFileOfARename) {
    const Expected<CommitFile> file =
        deserializeRepoFile(object(R"({"path":"new","previousPath":"old","storagePath":"po:x"})"));
    ASSERT_TRUE(file.hasValue());
    ASSERT_NE(file->previous, nullptr);
    EXPECT_EQ(file->previous->path, L"old");
    EXPECT_EQ(file->previous.use_count(), 1);
}

TEST(RepoFileRecord, HasNoPreviousFileForNull) {
    const Expected<CommitFile> file =
        deserializeRepoFile(object(R"({"path":"p","previousPath":null,"storagePath":"po:x"})"));
    ASSERT_TRUE(file.hasValue());
    EXPECT_EQ(file->previous, nullptr);
}

// Only the writer leaves out an empty or an equal previous path.
TEST(RepoFileRecord, TakesAnEmptyOrEqualPreviousPathAsItStands) {
    for (const char* previous : {"", "p"}) {
        const Expected<CommitFile> file =
            deserializeRepoFile(object(R"({"path":"p","storagePath":"po:x","previousPath":")" +
                                       std::string(previous) + "\"}"));
        ASSERT_TRUE(file.hasValue());
        ASSERT_NE(file->previous, nullptr);
        EXPECT_EQ(file->previous->path, OdString(previous));
    }
}

TEST(RepoFileRecord, RefusesEachFaultInTheOrderOfTheChecks) {
    const struct {
        const char* text;
        std::string outcome;
    } cases[] = {
        {R"({})", missing("repo file", "storagePath")},
        {R"({"path":1})", missing("repo file", "storagePath")},
        {R"({"storagePath":1})", missing("repo file", "path")},
        {R"({"storagePath":1,"previousPath":2})", missing("repo file", "path")},
        {R"({"storagePath":1,"path":2,"previousPath":3})",
         wrongKind("string", "int", "storagePath")},
        {R"({"storagePath":"s","path":2,"previousPath":3})", wrongKind("string", "int", "path")},
        {R"({"storagePath":"s","path":"p","previousPath":3})", wrongKind("string", "int")},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(outcome(text), expected) << text;
}

TEST(RepoFileRecord, TakesOneKindForEachMember) {
    for (const Kind& kind : kinds) {
        const std::string name = kind.name;
        const std::string value = kind.text;
        const bool isText = name == "string";
        EXPECT_EQ(outcome(R"({"path":"p","storagePath":)" + value + "}"),
                  isText ? "a value" : wrongKind("string", name, "storagePath"));
        EXPECT_EQ(outcome(R"({"storagePath":"s","path":)" + value + "}"),
                  isText ? "a value" : wrongKind("string", name, "path"));
        // Here the message has no line for the key.
        EXPECT_EQ(outcome(R"({"storagePath":"s","path":"p","previousPath":)" + value + "}"),
                  isText || name == "null" ? "a value" : wrongKind("string", name));
    }
}

}  // namespace
