#include <tests/cli/commands/HistoryProject.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::contentsOf;
using qrv_test::HistoryProject;
using qrv_test::Outcome;

/// Three files, staged for the first commit.
class UnstageCommand : public testing::Test {
protected:
    UnstageCommand() {
        project.write(
            {{"plans/ground.dwg", "ground"}, {"plans/roof.dwg", "roof"}, {"list.csv", "3"}});
        project.run({"add", "plans", "list.csv"});
    }

    const HistoryProject project;
};

TEST_F(UnstageCommand, TakesFilesAndFoldersOffTheStage) {
    const auto before = contentsOf(project / "plans");
    EXPECT_EQ(project.qrv({"unstage", "plans"}), (Outcome{0, "Taken off the stage: 2\n", ""}));
    EXPECT_EQ(contentsOf(project / "plans"), before);
    EXPECT_EQ(project.qrv({"unstage", "--json", "list.csv"}), (Outcome{0,
                                                                       R"([
    {
        "change" : "added",
        "path" : "list.csv"
    }
]
)",
                                                                       ""}));
    EXPECT_EQ(project.run({"state"}).find("staged"), std::string::npos);
}

TEST_F(UnstageCommand, TakesEverything) {
    EXPECT_EQ(project.qrv({"unstage", "--all"}), (Outcome{0, "Taken off the stage: 3\n", ""}));
    EXPECT_EQ(project.qrv({"unstage", "--all"}), (Outcome{0, "Taken off the stage: 0\n", ""}));
}

TEST_F(UnstageCommand, ChangesNothingWhenOneNameIsNotStaged) {
    EXPECT_EQ(project.qrv({"unstage", "list.csv", "plans/cellar.dwg"}),
              (Outcome{1, "", "qrv: 'plans/cellar.dwg' is not staged\n"}));
    EXPECT_EQ(project.qrv({"unstage", "--all"}).output, "Taken off the stage: 3\n");
}

TEST_F(UnstageCommand, TakesGlobsAndEndsOfNames) {
    EXPECT_EQ(project.qrv({"unstage", "*.dwg"}), (Outcome{0, "Taken off the stage: 2\n", ""}));
    EXPECT_EQ(project.qrv({"unstage", "list"}), (Outcome{0, "Taken off the stage: 1\n", ""}));
}

TEST_F(UnstageCommand, RefusesAPathOutside) {
    const std::string root = fs::canonical(project.folder.path());
    EXPECT_EQ(project.qrv({"unstage", "../x"}),
              (Outcome{1, "", "qrv: '../x' lies outside the repository '" + root + "'\n"}));
}

TEST_F(UnstageCommand, NeedsEitherNamesOrAll) {
    EXPECT_EQ(project.qrv({"unstage"}).status, 2);
    EXPECT_EQ(project.qrv({"unstage", "--all", "plans"}).status, 2);
}

TEST_F(UnstageCommand, LeavesTheOtherHalfOfARenaming) {
    project.run({"commit", "-m", "First"});
    fs::rename(project / "list.csv", project / "parts.csv");
    project.run({"add", "parts.csv"});
    EXPECT_EQ(project.qrv({"unstage", "parts.csv"}).status, 0);
    EXPECT_EQ(project.run({"commit", "-m", "Gone"}), "Commit 2 on master: Gone\n");
    EXPECT_EQ(project.run({"add", "--all"}),
              "  added     .qrv/properties/ignore\n"
              "  added     parts.csv\n"
              "Staged: 2\n");
}

}  // namespace
