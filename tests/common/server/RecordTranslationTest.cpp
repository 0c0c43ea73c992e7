#include <common/server/Commit.h>
#include <common/server/Reference.h>
#include <common/server/RepoData.h>
#include <tests/common/server/Records.h>
#include <tests/support/Catalogue.h>

#include <gmock/gmock.h>

namespace {

using qrv_test::array;
using qrv_test::object;
using qrv_test::outcomeOf;
using qrv_test::wrongKind;

TEST(RecordTranslation, CoversTheMessagesAboutWhatIsMissing) {
    const qrv_test::GermanHost host({
        {"Could not parse %ls, missing \"%ls\"", "%ls: %ls fehlt"},
        {"No commit hash found in reference.", "kein Commit"},
        {"No name found in reference.", "kein Name"},
        {"No reference type found in reference.", "kein Typ"},
        {"Could not parse parent hash, %ls type found.", "Eltern: %ls"},
    });
    ASSERT_TRUE(host.isLoaded());
    const auto reference = [](const char* text) {
        return outcomeOf([&] { return common::deserializeReference(object(text)); });
    };
    EXPECT_EQ(outcomeOf([] { return common::deserializeRepoData(OdString(L"{}")); }),
              "error: repo data: name fehlt");
    EXPECT_EQ(reference("{}"), "error: kein Commit");
    EXPECT_EQ(reference(R"({"commitHash":"c"})"), "error: kein Name");
    EXPECT_EQ(reference(R"({"commitHash":"c","name":"n"})"), "error: kein Typ");
    EXPECT_EQ(outcomeOf([] { return common::deserializeParentHashes(array("[1]")); }),
              "error: Eltern: int");
}

TEST(RecordTranslation, LeavesTheMessagesAboutKindsAsTheyAre) {
    const qrv_test::GermanHost host({
        {"Unsupported type: %ls", "falsch"},
        {"Error:\tExpected json type '%ls', found '%ls'", "falsch"},
        {"Encounterd '%ls', found '%ls. While %ls'", "falsch"},
        {"Unable to find json key '%ls'", "falsch"},
        {"parsing json vector.", "falsch"},
        {"repo data", "falsch"},
    });
    ASSERT_TRUE(host.isLoaded());
    EXPECT_EQ(outcomeOf([] {
                  return common::deserializeReference(
                      object(R"({"commitHash":"c","name":"n","refType":"x"})"));
              }),
              "error: Unsupported type: x");
    EXPECT_EQ(outcomeOf([] { return common::deserializeRepoDatas(OdString(L"[1]")); }),
              qrv_test::notAnObject("int"));
    EXPECT_EQ(outcomeOf([] { return common::deserializeRepoDatas(OdString(L"1")); }),
              wrongKind("array", "int"));
    EXPECT_EQ(outcomeOf([] { return common::deserializeCommit(object("{}")); }),
              "throws: Unable to find json key 'annotation'\njson key:\t\"annotation\"");
    EXPECT_EQ(outcomeOf([] { return common::deserializeRepoData(OdString(L"{}")); }),
              qrv_test::missing("repo data", "name"));
}

}  // namespace
