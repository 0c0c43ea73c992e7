#include <common/server/Commit.h>
#include <tests/common/server/Records.h>

#include <gmock/gmock.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using common::Commit;
using common::deserializeCommit;
using common::deserializeParentHashes;
using qrv_test::array;
using qrv_test::Kind;
using qrv_test::kinds;
using qrv_test::missing;
using qrv_test::notAnObject;
using qrv_test::object;
using qrv_test::outcomeOf;
using qrv_test::wrongKind;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string annotation = R"("annotation":{"author":"a","date":1.5})";

std::string outcome(const std::string& members) {
    return outcomeOf([&] { return deserializeCommit(object("{" + members + "}")); });
}

/// The outcome for a commit that is good but for one member.
std::string outcomeWith(const std::string& key, const std::string& value) {
    jsonlib::json::Object record =
        object("{" + annotation + R"(,"files":[],"hash":"h","commitNo":1,"parentsHashes":[]})");
    record[OdString::fromNarrow(key).toWide()] = qrv_test::parsed(value);
    return outcomeOf([&] { return deserializeCommit(record); });
}

std::string parentsOutcome(const std::string& text) {
    return outcomeOf([&] { return deserializeParentHashes(array(text)); });
}

std::string wrongParent(const std::string& kind) {
    return "error: Could not parse parent hash, " + kind + " type found.";
}

TEST(ParentHashes, KeepTheirOrder) {
    EXPECT_THAT(deserializeParentHashes(array(R"(["b","","a","b"])")).value(),
                ElementsAre(OdString(L"b"), OdString(), OdString(L"a"), OdString(L"b")));
    EXPECT_THAT(deserializeParentHashes(array("[]")).value(), IsEmpty());
}

TEST(ParentHashes, EndAtTheFirstThatIsNoText) {
    for (const Kind& kind : kinds) {
        const std::string name = kind.name;
        EXPECT_EQ(parentsOutcome("[\"a\"," + std::string(kind.text) + "]"),
                  name == "string" ? "a value" : wrongParent(name));
    }
    EXPECT_EQ(parentsOutcome(R"(["a",1.5,{},1])"), wrongParent("real"));
}

TEST(Commit, IsReadWhole) {
    const Expected<Commit> commit = deserializeCommit(object(
        R"({"annotation":{"author":"ada","date":1709647629000.0,"message":"m"},"commitNo":12,)"
        R"("files":[{"path":"b","storagePath":"po:1"},)"
        R"({"path":"a","previousPath":"z","storagePath":"tf:a#1"}],)"
        R"("hash":"abc","parentsHashes":["p","o"],"unknown":1})"));
    ASSERT_TRUE(commit.hasValue());
    EXPECT_EQ(commit->hash, L"abc");
    EXPECT_EQ(commit->commitNo, 12U);
    EXPECT_EQ(commit->annotation.author, L"ada");
    EXPECT_EQ(commit->annotation.message, L"m");
    EXPECT_EQ(commit->annotation.date.packedValue(), 1'709'647'629'000);
    EXPECT_THAT(commit->parentHashes, ElementsAre(OdString(L"p"), OdString(L"o")));
    ASSERT_EQ(commit->files.size(), 2U);
    EXPECT_EQ(commit->files[0].current.path, L"b");
    EXPECT_EQ(commit->files[0].current.storagePath, L"po:1");
    EXPECT_EQ(commit->files[0].previous, nullptr);
    EXPECT_EQ(commit->files[1].current.path, L"a");
    ASSERT_NE(commit->files[1].previous, nullptr);
    EXPECT_EQ(commit->files[1].previous->path, L"z");
}

TEST(Commit, HasNoParentsWithoutTheirMember) {
    const Expected<Commit> commit =
        deserializeCommit(object("{" + annotation + R"(,"files":[],"hash":"h","commitNo":1})"));
    ASSERT_TRUE(commit.hasValue());
    EXPECT_THAT(commit->parentHashes, IsEmpty());
    EXPECT_THAT(commit->files, IsEmpty());
}

TEST(Commit, TakesItsNumberAsUnsigned) {
    const auto numberOf = [](const std::string& number) {
        return deserializeCommit(object("{" + annotation + R"(,"files":[],"hash":"h","commitNo":)" +
                                        number + "}"))
            ->commitNo;
    };
    EXPECT_EQ(numberOf("18446744073709551615"), UINT64_MAX);
    EXPECT_EQ(numberOf("-1"), UINT64_MAX);
    EXPECT_EQ(numberOf("99999999999999999999999"), UINT64_MAX);
}

TEST(Commit, RefusesEachFaultInTheOrderOfTheChecks) {
    const std::string noKey = "throws: Unable to find json key '";
    const std::string noAnnotation = noKey + "annotation'\njson key:\t\"annotation\"";
    const std::string noFiles = noKey + "files'\njson key:\t\"files\"";
    const struct {
        std::string members;
        std::string outcome;
    } cases[] = {
        {"", noAnnotation},
        {R"("parentsHashes":1,"files":2,"hash":3,"commitNo":"4")", noAnnotation},
        {R"("annotation":1,"parentsHashes":1)", wrongKind("object", "int", "annotation")},
        {R"("annotation":{},"parentsHashes":1)", missing("annotation", "author")},
        {R"("annotation":{"author":"a","date":1},"parentsHashes":1)",
         wrongKind("real", "int", "date")},
        {annotation + R"(,"parentsHashes":1)", wrongKind("array", "int", "parentsHashes")},
        {annotation + R"(,"parentsHashes":[1])", wrongParent("int")},
        {annotation, noFiles},
        {annotation + R"(,"files":1)", wrongKind("array", "int", "files")},
        {annotation + R"(,"files":[1])", notAnObject("int")},
        {annotation + R"(,"files":[{}])", missing("repo file", "storagePath")},
        {annotation + R"(,"files":[])", missing("commit", "hash")},
        {annotation + R"(,"files":[],"commitNo":"4")", missing("commit", "hash")},
        {annotation + R"(,"files":[],"hash":3)", missing("commit", "commitNo")},
        {annotation + R"(,"files":[],"hash":3,"commitNo":"4")", wrongKind("string", "int", "hash")},
        {annotation + R"(,"files":[],"hash":"h","commitNo":"4")",
         wrongKind("int", "string", "commitNo")},
        {annotation + R"(,"files":[],"hash":"h","commitNo":3.0)",
         wrongKind("int", "real", "commitNo")},
    };
    for (const auto& [members, expected] : cases)
        EXPECT_EQ(outcome(members), expected) << members;
}

TEST(Commit, TakesOneKindForEachMember) {
    for (const Kind& kind : kinds) {
        const std::string name = kind.name;
        EXPECT_EQ(outcomeWith("annotation", kind.text),
                  name == "object" ? missing("annotation", "author")
                                   : wrongKind("object", name, "annotation"));
        EXPECT_EQ(
            outcomeWith("parentsHashes", kind.text),
            name == "array" ? wrongParent("array") : wrongKind("array", name, "parentsHashes"));
        EXPECT_EQ(outcomeWith("files", kind.text),
                  name == "array" ? notAnObject("array") : wrongKind("array", name, "files"));
        EXPECT_EQ(outcomeWith("hash", kind.text),
                  name == "string" ? "a value" : wrongKind("string", name, "hash"));
        EXPECT_EQ(outcomeWith("commitNo", kind.text),
                  name == "int" ? "a value" : wrongKind("int", name, "commitNo"));
    }
}

TEST(Commit, EndsItsFilesAtTheFirstBadOne) {
    const std::string good = R"({"path":"p","storagePath":"s"})";
    for (const Kind& kind : kinds) {
        const std::string name = kind.name;
        EXPECT_EQ(outcomeWith("files", "[" + good + "," + kind.text + ",[]]"),
                  name == "object" ? missing("repo file", "storagePath") : notAnObject(name));
    }
    EXPECT_EQ(outcomeWith("files", "[" + good + R"(,{"path":"p","storagePath":1},1])"),
              wrongKind("string", "int", "storagePath"));
}

}  // namespace
