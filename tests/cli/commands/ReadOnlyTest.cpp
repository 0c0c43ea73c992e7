#include <tests/cli/commands/HistoryProject.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::contentsOf;
using qrv_test::HistoryProject;
using qrv_test::Outcome;
using qrv_test::readFile;
using qrv_test::runShell;
using qrv_test::TemporaryFolder;

/// The repository on a medium that cannot be written, as the commands of one shell see it.
class ReadOnlyMedium : public testing::Test {
protected:
    void SetUp() override {
        project.write({{"plan.dwg", "first plan"}, {"notes/a.txt", "first\n"}});
        project.commit("first");
        project.write({{"plan.dwg", "second plan"}, {"notes/a.txt", "second\n"}});
        project.commit("second");
        project.run({"gc"});
        project.write({{"notes/a.txt", "third\n"}});
        if (onMedium("touch .qrv/x").status == 0 || onMedium("true").status != 0)
            GTEST_SKIP() << "nothing can be mounted here";
    }

    Outcome onMedium(const std::string& commands) const {
        const std::string folder = project.folder.path();
        return runShell("/", "unshare -m sh -c '" + ("mount --bind " + folder + " " + folder) +
                                 " && mount -o remount,ro,bind " + folder + " && cd " + folder +
                                 " && " + commands + "'");
    }

    const HistoryProject project;
    const TemporaryFolder elsewhere;
};

// Symptom: from a folder on a medium that cannot be written nothing could be brought back.
// Cause: a restore into another folder took the lock, as if it changed the repository.
TEST_F(ReadOnlyMedium, CanBeReadByEveryCommandThatLooks) {
    const auto before = contentsOf(project.folder.path());
    const std::string target = elsewhere / "back";
    EXPECT_EQ(onMedium("$QRV restore . --from 1 --to " + target).messages,
              "qrv: Note: files left out because they belong to the repository: 1\n");
    EXPECT_EQ(readFile(target + "/plan.dwg"), "first plan");
    EXPECT_EQ(readFile(target + "/notes/a.txt"), "first\n");
    EXPECT_EQ(onMedium("$QRV log"), (Outcome{0, project.run({"log"}), ""}));
    EXPECT_EQ(onMedium("$QRV show 2"), (Outcome{0, project.run({"show", "2"}), ""}));
    EXPECT_EQ(onMedium("$QRV show 1 plan.dwg").status,
              project.qrv({"show", "1", "plan.dwg"}).status);
    EXPECT_EQ(onMedium("$QRV diff 1 2"), (Outcome{0, project.run({"diff", "1", "2"}), ""}));
    EXPECT_EQ(onMedium("$QRV diff"), (Outcome{0, project.run({"diff"}), ""}));
    EXPECT_EQ(onMedium("$QRV branch"), (Outcome{0, project.run({"branch"}), ""}));
    EXPECT_EQ(onMedium("$QRV status"), (Outcome{0, project.run({"status"}), ""}));
    EXPECT_EQ(onMedium("$QRV verify"), (Outcome{0, project.run({"verify"}), ""}));
    EXPECT_EQ(onMedium("$QRV files"), (Outcome{0, project.run({"files"}), ""}));
    EXPECT_EQ(before.size(), contentsOf(project.folder.path()).size());
}

TEST_F(ReadOnlyMedium, IsToldByACommandThatChangesSomething) {
    const Outcome outcome = onMedium("$QRV add --all");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.messages, testing::HasSubstr("cannot be changed: Read-only file system"));
}

}  // namespace
