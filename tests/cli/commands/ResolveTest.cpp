#include <tests/cli/commands/HistoryProject.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::HistoryProject;
using qrv_test::Outcome;
using qrv_test::readFile;

/// In the middle of a merge of "side": "plan.dwg" was changed on both sides, "gone.txt" removed
/// there and "list.csv" here.
class ResolveCommand : public testing::Test {
protected:
    ResolveCommand() {
        project.write({{"plan.dwg", "plan"}, {"list.csv", "3"}, {"gone.txt", "text"}});
        project.commit("First");
        project.run({"switch", "--create", "side"});
        project.write({{"plan.dwg", "their plan"}, {"list.csv", "their list"}});
        fs::remove(project / "gone.txt");
        project.commit("Side");
        project.run({"switch", "master"});
        project.write({{"plan.dwg", "our plan"}, {"gone.txt", "our text"}});
        fs::remove(project / "list.csv");
        project.commit("Master");
        EXPECT_EQ(project.qrv({"merge", "side"}).status, 1);
    }

    Outcome resolve(const std::string& path, const std::string& way) const {
        return project.qrv({"resolve", path, way});
    }
    bool isThere(const std::string& path) const { return fs::exists(project / path); }
    /// The line of the status about the file.
    std::string change(const std::string& path) const {
        const std::string status = project.run({"status"});
        const std::size_t end = status.find("  " + path + "\n");
        return end == std::string::npos ? "" : status.substr(end - 8, 8);
    }

    const HistoryProject project;
};

TEST_F(ResolveCommand, TakesOurVersions) {
    EXPECT_EQ(resolve("plan.dwg", "--mine"),
              (Outcome{0, "Resolved 'plan.dwg'; conflicts left: 2\n", ""}));
    EXPECT_EQ(resolve("gone.txt", "--mine"),
              (Outcome{0, "Resolved 'gone.txt'; conflicts left: 1\n", ""}));
    EXPECT_EQ(resolve("list.csv", "--mine"),
              (Outcome{0, "Resolved 'list.csv'; conflicts left: 0\n", ""}));
    EXPECT_EQ(readFile(project / "plan.dwg"), "our plan");
    EXPECT_EQ(readFile(project / "gone.txt"), "our text");
    EXPECT_FALSE(isThere("list.csv"));
    EXPECT_EQ(project.run({"commit", "-m", "Ours"}), "Commit 4 on master: Ours\n");
    EXPECT_EQ(project.run({"status"}),
              "Branch 'master', commit 4: Ours\n"
              "Nothing has changed; files: 3\n");
}

TEST_F(ResolveCommand, TakesTheirVersions) {
    for (const char* const path : {"plan.dwg", "gone.txt", "list.csv"})
        EXPECT_EQ(resolve(path, "--theirs").status, 0) << path;
    EXPECT_EQ(readFile(project / "plan.dwg"), "their plan");
    EXPECT_FALSE(isThere("gone.txt"));
    EXPECT_EQ(readFile(project / "list.csv"), "their list");
    EXPECT_EQ(change("plan.dwg"), "modified");
    EXPECT_EQ(change("gone.txt"), "removed ");
    EXPECT_EQ(change("list.csv"), "added   ");
    project.run({"commit", "-m", "Theirs"});
    const qrv_test::TemporaryFolder target;
    project.run({"restore", "plan.dwg", "list.csv", "--to", target.path()});
    EXPECT_EQ(readFile(target / "plan.dwg"), "their plan");
    EXPECT_EQ(readFile(target / "list.csv"), "their list");
}

TEST_F(ResolveCommand, TakesWhatAPersonMadeOfBoth) {
    project.write({{"plan.dwg", "both plans"}, {"list.csv", "both lists"}});
    fs::remove(project / "gone.txt");
    for (const char* const path : {"plan.dwg", "gone.txt", "list.csv"})
        EXPECT_EQ(resolve(path, "--merged").status, 0) << path;
    EXPECT_EQ(readFile(project / "plan.dwg"), "both plans");
    EXPECT_EQ(change("plan.dwg"), "modified");
    EXPECT_EQ(change("gone.txt"), "removed ");
    EXPECT_EQ(change("list.csv"), "added   ");
}

TEST_F(ResolveCommand, RefusesToReplaceWhatIsKeptNowhere) {
    project.write({{"plan.dwg", "a day's work"}});
    for (const char* const way : {"--mine", "--theirs"}) {
        EXPECT_EQ(resolve("plan.dwg", way),
                  (Outcome{1, "",
                           "qrv: These files have changes that are kept nowhere (--force replaces "
                           "them):;   plan.dwg\n"}));
    }
    EXPECT_EQ(readFile(project / "plan.dwg"), "a day's work");
    const Outcome forced = project.qrv({"resolve", "plan.dwg", "--theirs", "--force"});
    EXPECT_EQ(forced.status, 0);
    EXPECT_EQ(forced.messages.substr(0, 46), "qrv: Note: what 'plan.dwg' held is kept as tf:");
    EXPECT_EQ(readFile(project / "plan.dwg"), "their plan");
}

TEST_F(ResolveCommand, PrintsJsonWhenAsked) {
    resolve("plan.dwg", "--mine");
    EXPECT_EQ(project.qrv({"resolve", "gone.txt", "--theirs", "--json"}), (Outcome{0,
                                                                                   R"([
    {
        "local" : "removed",
        "path" : "list.csv",
        "remote" : "modified"
    }
]
)",
                                                                                   ""}));
}

TEST_F(ResolveCommand, RefusesAFileWithoutAConflict) {
    const Outcome none = {1, "", "qrv: 'notes.txt' has no conflict\n"};
    EXPECT_EQ(resolve("notes.txt", "--mine"), none);
    resolve("plan.dwg", "--mine");
    EXPECT_EQ(resolve("plan.dwg", "--mine"), (Outcome{1, "", "qrv: 'plan.dwg' has no conflict\n"}));
    EXPECT_EQ(resolve("../x", "--mine").status, 1);
}

TEST_F(ResolveCommand, NeedsExactlyOneWay) {
    EXPECT_EQ(project.qrv({"resolve", "plan.dwg"}).status, 2);
    EXPECT_EQ(project.qrv({"resolve", "plan.dwg", "--mine", "--theirs"}).status, 2);
    EXPECT_EQ(project.qrv({"resolve", "--mine"}).status, 2);
}

TEST_F(ResolveCommand, LeavesAMergeThatCanStillBeTakenBack) {
    resolve("plan.dwg", "--theirs");
    EXPECT_EQ(project.qrv({"merge", "--abort"}), (Outcome{0, "The merge is taken back\n", ""}));
    EXPECT_EQ(readFile(project / "plan.dwg"), "our plan");
    EXPECT_EQ(project.run({"status"}),
              "Branch 'master', commit 3: Master\n"
              "Nothing has changed; files: 3\n");
}

}  // namespace
