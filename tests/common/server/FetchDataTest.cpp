#include <common/server/FetchData.h>
#include <tests/common/server/Records.h>

#include <gmock/gmock.h>

#include <string>

namespace {

using common::deserializeFetchData;
using common::FetchData;
using common::RefType;
using qrv_test::Kind;
using qrv_test::kinds;
using qrv_test::missing;
using qrv_test::notAnObject;
using qrv_test::object;
using qrv_test::outcomeOf;
using qrv_test::wrongKind;
using testing::IsEmpty;

const std::string repository = R"("repository":{"name":"a","id":"1"})";
const std::string reference = R"({"name":"n","commitHash":"c","refType":"tag"})";
const std::string commit =
    R"({"annotation":{"author":"a","date":1.5},"files":[],"hash":"h","commitNo":1})";

FetchData fetched(const std::string& members) {
    return deserializeFetchData(object("{" + members + "}")).value();
}

std::string outcome(const std::string& members) {
    return outcomeOf([&] { return deserializeFetchData(object("{" + members + "}")); });
}

TEST(FetchData, MayHoldTheRepositoryAlone) {
    const FetchData data = fetched(repository);
    EXPECT_EQ(data.repository.name, L"a");
    EXPECT_EQ(data.repository.id, L"1");
    EXPECT_EQ(data.repository.description, L"");
    EXPECT_THAT(data.references, IsEmpty());
    EXPECT_THAT(data.commits, IsEmpty());
}

TEST(FetchData, MayHoldReferencesWithoutCommits) {
    const FetchData none = fetched(repository + R"(,"references":[])");
    EXPECT_THAT(none.references, IsEmpty());
    EXPECT_THAT(none.commits, IsEmpty());

    const FetchData one = fetched(repository + R"(,"references":[)" + reference + "]");
    ASSERT_EQ(one.references.size(), 1U);
    EXPECT_EQ(one.references[0].name, L"n");
    EXPECT_THAT(one.commits, IsEmpty());
}

TEST(FetchData, KeepsTheOrderOfReferencesAndCommits) {
    const FetchData data =
        fetched(R"("commits":[{"annotation":{"author":"b","date":2.5},"files":[],"hash":"z",)"
                R"("commitNo":2},)" +
                commit + R"(],"references":[{"name":"z","commitHash":"d","refType":"branch"},)" +
                reference + "]," + repository);
    ASSERT_EQ(data.references.size(), 2U);
    EXPECT_EQ(data.references[0].name, L"z");
    EXPECT_EQ(data.references[0].type, RefType::Branch);
    EXPECT_EQ(data.references[1].name, L"n");
    ASSERT_EQ(data.commits.size(), 2U);
    EXPECT_EQ(data.commits[0].hash, L"z");
    EXPECT_EQ(data.commits[0].annotation.author, L"b");
    EXPECT_EQ(data.commits[1].hash, L"h");
}

TEST(FetchData, RefusesEachFaultInTheOrderOfTheChecks) {
    const struct {
        std::string members;
        std::string outcome;
    } cases[] = {
        {"", missing("fetch data", "repository")},
        {R"("references":1,"commits":2)", missing("fetch data", "repository")},
        {R"("repository":1,"commits":2)", wrongKind("object", "int", "repository")},
        {R"("repository":{},"commits":2)", missing("repo data", "name")},
        {R"("repository":{"name":"a"},"commits":2)", missing("repo data", "id")},
        {R"("repository":{"name":"a","id":1},"commits":2)", wrongKind("string", "int", "id")},
        {repository + R"(,"commits":[])", missing("fetch data", "references")},
        {repository + R"(,"commits":2)", missing("fetch data", "references")},
        {repository + R"(,"references":1,"commits":2)", wrongKind("array", "int", "references")},
        {repository + R"(,"references":[1],"commits":2)", notAnObject("int")},
        {repository + R"(,"references":[{}],"commits":2)",
         "error: No commit hash found in reference."},
        {repository + R"(,"references":[],"commits":2)", wrongKind("array", "int", "commits")},
        {repository + R"(,"references":[],"commits":[2])", notAnObject("int")},
        {repository + R"(,"references":[],"commits":[{}])",
         "throws: Unable to find json key 'annotation'\njson key:\t\"annotation\""},
        {repository + R"(,"references":[],"commits":[)" + commit + R"(,{"annotation":{}},1])",
         missing("annotation", "author")},
    };
    for (const auto& [members, expected] : cases)
        EXPECT_EQ(outcome(members), expected) << members;
}

TEST(FetchData, TakesOneKindForEachMember) {
    for (const Kind& kind : kinds) {
        const std::string name = kind.name;
        const std::string value = kind.text;
        const bool isArray = name == "array";
        EXPECT_EQ(outcome(R"("repository":)" + value),
                  name == "object" ? missing("repo data", "name")
                                   : wrongKind("object", name, "repository"));
        EXPECT_EQ(outcome(repository + R"(,"references":)" + value),
                  isArray ? notAnObject("array") : wrongKind("array", name, "references"));
        EXPECT_EQ(outcome(repository + R"(,"references":[],"commits":)" + value),
                  isArray ? notAnObject("array") : wrongKind("array", name, "commits"));
    }
}

}  // namespace
