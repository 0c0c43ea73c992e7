#include <engine/operations/CollectGarbage.h>
#include <engine/operations/RebuildHistory.h>
#include <engine/operations/Verify.h>
#include <tests/cli/commands/HistoryProject.h>
#include <tests/engine/base/RecordingCaller.h>
#include <tests/engine/storage/OldForms.h>
#include <tests/support/Files.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::anyCaller;
using qrv_test::readFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Two commits of a text, and a folder beside the repository.
class Maintenance : public testing::Test {
protected:
    Maintenance() {
        for (const char* const version : {"first", "second"}) {
            project.write({{"plans/a.txt", version}});
            project.commit(version);
        }
    }
    std::string inside() const { return (project / "plans").string(); }
    std::string log() const { return readFile(project / ".qrv/qrv.log"); }
    /// What each operation answers where there is no repository.
    std::string noRepository() const {
        return "'" + elsewhere.path().string() +
               "' is not in a repository, nor is any folder above it one (qrv init makes one)";
    }

    const qrv_test::HistoryProject project;
    const qrv_test::TemporaryFolder elsewhere;
};

TEST_F(Maintenance, VerifyTellsWhatIsThereAndWhatIsLost) {
    const qrv::Verified whole = qrv::verify(inside(), {}, anyCaller()).value();
    EXPECT_EQ(whole.root.toNarrow(), fs::canonical(project.folder.path()).string());
    EXPECT_EQ(whole.found.commits, 2);
    EXPECT_EQ(whole.found.packedObjects, 3);
    EXPECT_THAT(whole.found.problems, IsEmpty());

    fs::remove_all(project / ".qrv/packs");

    EXPECT_EQ(qrv::verify(inside(), {}, anyCaller())->found.problems.size(), 3U);
}

TEST_F(Maintenance, CollectGarbageIsLoggedUnlessItOnlyLooks) {
    qrv_test::toOldForms(project.folder);
    const std::string before = log();
    EXPECT_EQ(qrv::collectGarbage(inside(), {.onlyLook = true}, anyCaller())->packed.count, 3);
    EXPECT_EQ(log(), before);

    EXPECT_EQ(qrv::collectGarbage(inside(), {}, anyCaller())->packed.count, 3);

    EXPECT_THAT(log(), HasSubstr("gc"));
    EXPECT_EQ(qrv::collectGarbage(inside(), {}, anyCaller())->packed.count, 0);
}

TEST_F(Maintenance, CollectGarbageRefusesADamagedHistory) {
    fs::resize_file(project / ".qrv/qrv.db", 5000);
    const Expected<qrv::Collected> collected = qrv::collectGarbage(inside(), {}, anyCaller());
    ASSERT_FALSE(collected);
    EXPECT_THAT(collected.error().message.toNarrow(), HasSubstr("qrv.db"));
    EXPECT_FALSE(fs::exists(project / ".qrv/objects.pack"));
}

TEST_F(Maintenance, RebuildHistoryMakesALostOneAnew) {
    fs::remove(project / ".qrv/qrv.db");

    const qrv::Rebuilt rebuilt = qrv::rebuildHistory(inside(), anyCaller()).value();

    EXPECT_EQ(rebuilt.commits, 2);
    EXPECT_EQ(rebuilt.references, 1);
    EXPECT_TRUE(rebuilt.setAside.isEmpty());
    EXPECT_THAT(rebuilt.problems, IsEmpty());
    EXPECT_THAT(qrv::verify(inside(), {}, anyCaller())->found.problems, IsEmpty());
}

TEST_F(Maintenance, NeedsARepository) {
    const std::string folder = elsewhere.path().string();
    EXPECT_EQ(qrv::verify(folder, {}, anyCaller()).error().message.toNarrow(), noRepository());
    EXPECT_EQ(qrv::collectGarbage(folder, {}, anyCaller()).error().message.toNarrow(),
              noRepository());
    EXPECT_EQ(qrv::rebuildHistory(folder, anyCaller()).error().message.toNarrow(), noRepository());
}

}  // namespace
