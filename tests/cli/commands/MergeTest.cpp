#include <tests/cli/commands/HistoryProject.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::contentsOf;
using qrv_test::HistoryProject;
using qrv_test::Outcome;
using qrv_test::readFile;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;
using testing::HasSubstr;

const std::string toResolve =
    "qrv: Conflicts to resolve with qrv resolve, before qrv commit ends the merge: ";
const std::string goingOn =
    "qrv: A merge is going on: resolve its conflicts and commit it, or "
    "take it back with qrv merge --abort\n";

/// "side" changed, added and removed files since the first commit; "master" is the current branch.
class MergeCommand : public testing::Test {
protected:
    MergeCommand() {
        project.write(
            {{"plan.dwg", "plan"}, {"list.csv", "3"}, {"notes.txt", "notes"}, {"old/a.txt", "a"}});
        project.commit("First");
        project.run({"switch", "--create", "side"});
        project.write(
            {{"plan.dwg", "plan of the side"}, {"list.csv", "4"}, {"new/roof.dwg", "roof"}});
        fs::remove_all(project / "old");
        project.commit("Side");
        project.run({"switch", "master"});
    }

    Outcome merge(const std::string& name) const { return project.qrv({"merge", name}); }
    /// "master" goes its own way.
    void change(const std::map<std::string, std::string>& files) const {
        project.write(files);
        project.commit("Master");
    }
    /// Everything but the metadata.
    std::map<std::string, std::string> tree() const {
        std::map<std::string, std::string> files = contentsOf(project.folder.path());
        std::erase_if(files, [](const auto& file) { return file.first.starts_with(".qrv/"); });
        return files;
    }

    const HistoryProject project;
};

TEST_F(MergeCommand, GoesForwardWhereNothingElseWasDone) {
    EXPECT_EQ(merge("side"), (Outcome{0, "Went forward to 'side'; files changed: 4\n", ""}));
    EXPECT_EQ(readFile(project / "plan.dwg"), "plan of the side");
    EXPECT_EQ(project.run({"status"}),
              "Branch 'master', commit 2: Side\n"
              "Nothing has changed; files: 5\n");
    EXPECT_EQ(merge("side"), (Outcome{0, "'side' is merged already\n", ""}));
    EXPECT_EQ(merge("#1"), (Outcome{0, "'#1' is merged already\n", ""}));
}

TEST_F(MergeCommand, MakesACommitOfBothSides) {
    change({{"notes.txt", "more notes"}});
    EXPECT_EQ(merge("side"), (Outcome{0, "Merged 'side' as commit 4; files changed: 4\n", ""}));
    EXPECT_EQ(tree(), (std::map<std::string, std::string>{{"plan.dwg", "plan of the side"},
                                                          {"list.csv", "4"},
                                                          {"notes.txt", "more notes"},
                                                          {"new/", ""},
                                                          {"new/roof.dwg", "roof"}}));
    EXPECT_EQ(project.run({"status"}),
              "Branch 'master', commit 4: Merge 'side' into 'master'\n"
              "Nothing has changed; files: 5\n");
}

TEST_F(MergeCommand, TakesItsMessageAndAuthorFromTheOptions) {
    change({{"notes.txt", "more notes"}});
    const Outcome outcome =
        project.qrv({"merge", "side", "-m", "Both", "--author", "Grace Hopper", "--json"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, HasSubstr("\"author\" : \"Grace Hopper\""));
    EXPECT_THAT(outcome.output, HasSubstr("\"message\" : \"Both\""));
    EXPECT_THAT(outcome.output, HasSubstr(R"(    "conflicts" : [
    ],
    "files" : [
        "list.csv",
        "new/roof.dwg",
        "old/a.txt",
        "plan.dwg"
    ],
    "result" : "committed"
}
)"));
}

TEST_F(MergeCommand, TakesTheSameChangeOnBothSidesForNoConflict) {
    change({{"list.csv", "4"}, {"new/roof.dwg", "roof"}});
    EXPECT_EQ(merge("side"), (Outcome{0, "Merged 'side' as commit 4; files changed: 2\n", ""}));
}

TEST_F(MergeCommand, LeavesOurBytesWhereBothSidesChangedAFile) {
    fs::remove(project / "list.csv");
    change({{"plan.dwg", "our plan"}, {"old/a.txt", "our a"}, {"new/roof.dwg", "our roof"}});
    EXPECT_EQ(merge("side"), (Outcome{1,
                                      "Merging 'side'; files changed: 0\n"
                                      "  list.csv (removed here, modified there)\n"
                                      "  new/roof.dwg (added here, added there)\n"
                                      "  old/a.txt (modified here, removed there)\n"
                                      "  plan.dwg (modified here, modified there)\n",
                                      toResolve + "4\n"}));
    EXPECT_EQ(tree(), (std::map<std::string, std::string>{{"plan.dwg", "our plan"},
                                                          {"notes.txt", "notes"},
                                                          {"old/", ""},
                                                          {"old/a.txt", "our a"},
                                                          {"new/", ""},
                                                          {"new/roof.dwg", "our roof"}}));
}

TEST_F(MergeCommand, StagesWhatOnlyTheOtherSideChanged) {
    change({{"plan.dwg", "our plan"}});
    EXPECT_EQ(merge("side").status, 1);
    const std::string status = project.run({"status"});
    EXPECT_EQ(status.substr(0, 42), "Branch 'master', commit 3: Master\nMerging ");
    EXPECT_EQ(status.substr(status.find("\n\n")),
              "\n\nStaged for the next commit:\n"
              "  modified  list.csv\n"
              "  added     new/roof.dwg\n"
              "  removed   old/a.txt\n"
              "\n"
              "Conflicts (qrv resolve PATH --mine, --theirs or --merged):\n"
              "  plan.dwg (modified here, modified there)\n");
}

TEST_F(MergeCommand, PrintsConflictsAsJsonWhenAsked) {
    change({{"plan.dwg", "our plan"}});
    EXPECT_EQ(project.qrv({"merge", "side", "--json"}), (Outcome{1,
                                                                 R"({
    "conflicts" : [
        {
            "local" : "modified",
            "path" : "plan.dwg",
            "remote" : "modified"
        }
    ],
    "files" : [
        "list.csv",
        "new/roof.dwg",
        "old/a.txt"
    ],
    "result" : "conflicts"
}
)",
                                                                 toResolve + "1\n"}));
}

TEST_F(MergeCommand, IsEndedByACommitWithTwoParents) {
    change({{"plan.dwg", "our plan"}});
    merge("side");
    EXPECT_EQ(project.qrv({"commit", "-m", "x"}),
              (Outcome{1, "", "qrv: Conflicts to resolve before a commit: 1 (qrv resolve)\n"}));
    project.run({"resolve", "plan.dwg", "--theirs"});
    EXPECT_EQ(project.run({"commit", "-m", "Merged"}), "Commit 4 on master: Merged\n");
    EXPECT_EQ(project.run({"status"}),
              "Branch 'master', commit 4: Merged\n"
              "Nothing has changed; files: 5\n");
    EXPECT_EQ(merge("side").output, "'side' is merged already\n");
    EXPECT_EQ(readFile(project / "plan.dwg"), "plan of the side");
}

TEST_F(MergeCommand, CanEndWithoutAnyChange) {
    change({{"list.csv", "4"}, {"new/roof.dwg", "roof"}, {"plan.dwg", "our plan"}});
    fs::remove_all(project / "old");
    project.commit("Gone");
    merge("side");
    project.run({"resolve", "plan.dwg", "--mine"});
    EXPECT_EQ(project.run({"commit", "-m", "Ours"}), "Commit 5 on master: Ours\n");
    EXPECT_EQ(merge("side").output, "'side' is merged already\n");
}

TEST_F(MergeCommand, LetsNothingElseBeginBeforeItsEnd) {
    change({{"plan.dwg", "our plan"}});
    merge("side");
    const auto before = tree();
    EXPECT_EQ(merge("side"), (Outcome{1, "", goingOn}));
    EXPECT_EQ(project.qrv({"switch", "side"}), (Outcome{1, "", goingOn}));
    EXPECT_EQ(tree(), before);
    project.run({"resolve", "plan.dwg", "--mine"});
    EXPECT_EQ(merge("side"), (Outcome{1, "", goingOn}));
}

TEST_F(MergeCommand, IsTakenBackWhole) {
    change({{"plan.dwg", "our plan"}});
    const auto before = tree();
    const std::string status = project.run({"status"});
    merge("side");
    EXPECT_EQ(project.qrv({"merge", "--abort"}), (Outcome{0, "The merge is taken back\n", ""}));
    EXPECT_EQ(tree(), before);
    EXPECT_EQ(project.run({"status"}), status);
    EXPECT_EQ(project.qrv({"merge", "--abort"}), (Outcome{1, "", "qrv: No merge is going on\n"}));
}

TEST_F(MergeCommand, IsNotTakenBackOverEdits) {
    change({{"plan.dwg", "our plan"}});
    const auto before = tree();
    merge("side");
    project.write({{"list.csv", "edited meanwhile"}});
    const auto edited = tree();
    EXPECT_EQ(project.qrv({"merge", "--abort"}),
              (Outcome{1, "",
                       "qrv: These files have changes that are kept nowhere (--force replaces "
                       "them):;   list.csv\n"}));
    EXPECT_EQ(tree(), edited);
    const Outcome forced = project.qrv({"merge", "--abort", "--force"});
    EXPECT_EQ(forced.status, 0);
    EXPECT_EQ(forced.messages.substr(0, 43), "qrv: Note: what 'list.csv' held is kept as ");
    EXPECT_EQ(tree(), before);
}

TEST_F(MergeCommand, RefusesAStageThatWouldBecomePartOfIt) {
    project.write({{"notes.txt", "staged"}});
    project.run({"add", "notes.txt"});
    EXPECT_EQ(merge("side"), (Outcome{1, "",
                                      "qrv: Commit the staged files first (qrv commit), or take "
                                      "them off the stage (qrv unstage --all)\n"}));
    // What is again as it was is not staged any more.
    project.write({{"notes.txt", "notes"}});
    EXPECT_EQ(merge("side").status, 0);
    EXPECT_EQ(project.run({"state"}).find("staged"), std::string::npos);
}

TEST_F(MergeCommand, LeavesFilesAloneThatItDoesNotNeed) {
    change({{"more.txt", "1"}});
    project.write({{"notes.txt", "edited"}, {"unknown.txt", "unknown"}});
    EXPECT_EQ(merge("side").status, 0);
    EXPECT_EQ(readFile(project / "notes.txt"), "edited");
    EXPECT_EQ(readFile(project / "unknown.txt"), "unknown");
}

TEST_F(MergeCommand, RefusesToReplaceChangesThatAreNotCommitted) {
    change({{"list.csv", "5"}});
    project.write({{"plan.dwg", "a day's work"}, {"new/roof.dwg", "unknown"}, {"list.csv", "6"}});
    const auto before = tree();
    EXPECT_EQ(merge("side"), (Outcome{1, "",
                                      "qrv: These files have changes that are not committed:;   "
                                      "list.csv;   new/roof.dwg;   plan.dwg\n"}));
    EXPECT_EQ(tree(), before);
}

TEST_F(MergeCommand, RefusesToReplaceWhatTheRulesHideAndLinks) {
    const TemporaryFolder elsewhere;
    project.write({{".qrv/properties/ignore", "roof.*\n"}});
    change({{"more.txt", "1"}});
    project.write({{"new/roof.dwg", "hidden"}});
    EXPECT_EQ(merge("side").status, 1);
    EXPECT_EQ(readFile(project / "new/roof.dwg"), "hidden");
    fs::remove_all(project / "new");
    fs::create_directory_symlink(elsewhere.path(), project / "new");
    EXPECT_EQ(merge("side").status, 1);
    EXPECT_TRUE(fs::is_empty(elsewhere.path()));
    EXPECT_EQ(readFile(project / "plan.dwg"), "plan");
}

TEST_F(MergeCommand, LeavesNoTraceWhenAFolderIsInTheWay) {
    change({{"more.txt", "1"}});
    const std::string status = project.run({"status"});
    const auto before = tree();
    fs::create_directories(project / "new/roof.dwg");
    EXPECT_EQ(merge("side").status, 1);
    fs::remove_all(project / "new");
    EXPECT_EQ(tree(), before);
    EXPECT_EQ(project.run({"status"}), status);
    EXPECT_EQ(merge("side").status, 0);
}

TEST_F(MergeCommand, KnowsNoNameThatIsNone) {
    EXPECT_EQ(merge("sidle"),
              (Outcome{1, "",
                       "qrv: There is no commit, branch or tag 'sidle' (did you mean 'side'?)\n"}));
    EXPECT_EQ(project.qrv({"merge"}).status, 2);
    EXPECT_EQ(project.qrv({"merge", "side", "--abort"}).status, 2);
}

TEST_F(MergeCommand, TakesACommitThatNoBranchNames) {
    project.run({"branch", "--delete", "side", "--force"});
    EXPECT_EQ(project.qrv({"merge", "#2"}).status, 0);
    EXPECT_EQ(readFile(project / "new/roof.dwg"), "roof");
}

}  // namespace
