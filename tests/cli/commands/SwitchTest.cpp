#include <tests/cli/commands/HistoryProject.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::HistoryProject;
using qrv_test::Outcome;
using qrv_test::readFile;
using qrv_test::runQrv;
using qrv_test::writeFile;

const std::string noRoom =
    "qrv: These files have no room, because something that is in no commit "
    "has their name or that of a folder above them:;   ";

/// A branch "side" that changed, added and removed files; "master" is the current one.
class SwitchCommand : public testing::Test {
protected:
    SwitchCommand() {
        project.write({{"plan.dwg", "plan"}, {"old/list.csv", "3"}, {"same.txt", "same"}});
        project.commit("First");
        project.run({"switch", "--create", "side"});
        project.write({{"plan.dwg", "plan of the side"}, {"new/roof.dwg", "roof"}});
        fs::remove_all(project / "old");
        project.commit("Side");
        project.run({"switch", "master"});
    }

    Outcome switchTo(const std::string& branch) const { return project.qrv({"switch", branch}); }
    /// Everything but the metadata.
    std::map<std::string, std::string> tree() const {
        std::map<std::string, std::string> files = qrv_test::contentsOf(project.folder.path());
        std::erase_if(files, [](const auto& file) { return file.first.starts_with(".qrv/"); });
        return files;
    }

    const HistoryProject project;
    const std::map<std::string, std::string> onMaster = {
        {"plan.dwg", "plan"}, {"old/", ""}, {"old/list.csv", "3"}, {"same.txt", "same"}};
    const std::map<std::string, std::string> onSide = {{"plan.dwg", "plan of the side"},
                                                       {"new/", ""},
                                                       {"new/roof.dwg", "roof"},
                                                       {"same.txt", "same"}};
};

TEST_F(SwitchCommand, BringsTheFilesOfTheOtherBranch) {
    EXPECT_EQ(switchTo("side"), (Outcome{0, "On branch 'side'; files changed: 3\n", ""}));
    EXPECT_EQ(tree(), onSide);
    EXPECT_EQ(project.run({"status"}),
              "Branch 'side', commit 2: Side\n"
              "Nothing has changed; files: 4\n");
    EXPECT_EQ(switchTo("master"), (Outcome{0, "On branch 'master'; files changed: 3\n", ""}));
    EXPECT_EQ(tree(), onMaster);
}

TEST_F(SwitchCommand, PrintsJsonWhenAsked) {
    const Outcome outcome = project.qrv({"switch", "side", "--json"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, testing::MatchesRegex(R"(\{
    "branch" : "side",
    "commit" : "[0-9a-f]+",
    "files" : 3
\}
)"));
}

TEST_F(SwitchCommand, DoesNotTouchFilesThatAreTheSame) {
    const fs::file_time_type time = fs::last_write_time(project / "same.txt");
    switchTo("side");
    EXPECT_EQ(fs::last_write_time(project / "same.txt"), time);
}

TEST_F(SwitchCommand, KeepsThePermissionsOfAFile) {
    fs::permissions(project / "plan.dwg", fs::perms(0640));
    switchTo("side");
    EXPECT_EQ(fs::status(project / "plan.dwg").permissions(), fs::perms(0640));
}

TEST_F(SwitchCommand, MakesABranchHereOrElsewhere) {
    EXPECT_EQ(project.qrv({"switch", "-c", "try/größer"}),
              (Outcome{0, "On branch 'try/größer'; files changed: 0\n", ""}));
    EXPECT_EQ(project.qrv({"switch", "-c", "later", "side"}),
              (Outcome{0, "On branch 'later'; files changed: 3\n", ""}));
    EXPECT_EQ(tree(), onSide);
    EXPECT_EQ(project.qrv({"switch", "-c", "earlier", "#1"}).status, 0);
    EXPECT_EQ(tree(), onMaster);
}

TEST_F(SwitchCommand, MakesABranchBeforeTheFirstCommit) {
    const HistoryProject fresh;
    EXPECT_EQ(fresh.qrv({"switch", "-c", "main"}),
              (Outcome{0, "On branch 'main'; files changed: 0\n", ""}));
    fresh.write({{"a.txt", "1"}});
    fresh.run({"add", "--all"});
    EXPECT_EQ(fresh.run({"commit", "-m", "x"}), "Commit 1 on main: x\n");
}

TEST_F(SwitchCommand, RefusesNamesThatAreWrong) {
    EXPECT_EQ(
        switchTo("sid"),
        (Outcome{1, "",
                 "qrv: There is no branch 'sid' (qrv switch --create makes one); did you mean "
                 "'side'?\n"}));
    EXPECT_EQ(project.qrv({"switch", "-c", "side"}),
              (Outcome{1, "", "qrv: There is a branch 'side' already\n"}));
    EXPECT_EQ(project.qrv({"switch", "-c", "master"}),
              (Outcome{1, "", "qrv: There is a branch 'master' already\n"}));
    EXPECT_EQ(project.qrv({"switch", "-c", "../x"}).status, 1);
    EXPECT_EQ(project.qrv({"switch", "-c", "x", "y"}),
              (Outcome{1, "", "qrv: There is no commit, branch or tag 'y'\n"}));
    EXPECT_EQ(project.qrv({"switch", "side", "#1"}).status, 2);
    EXPECT_EQ(project.qrv({"switch"}).status, 2);
    EXPECT_EQ(tree(), onMaster);
}

TEST_F(SwitchCommand, LeavesFilesAloneThatTheBranchesDoNotDifferIn) {
    project.write({{"same.txt", "edited"}, {"unknown.txt", "unknown"}});
    project.run({"add", "same.txt"});
    EXPECT_EQ(switchTo("side").status, 0);
    EXPECT_EQ(project.run({"status"}),
              "Branch 'side', commit 2: Side\n"
              "\n"
              "Staged for the next commit:\n"
              "  modified  same.txt\n"
              "\n"
              "Changed, not staged (qrv add PATH):\n"
              "  added     unknown.txt\n");
}

TEST_F(SwitchCommand, RefusesToReplaceChangesThatAreNotCommitted) {
    project.write({{"plan.dwg", "a day's work"}, {"new/roof.dwg", "another roof"}});
    fs::remove(project / "old/list.csv");
    const auto before = tree();
    EXPECT_EQ(switchTo("side"), (Outcome{1, "",
                                         "qrv: These files have changes that are not committed:;   "
                                         "new/roof.dwg;   old/list.csv;   plan.dwg\n"}));
    EXPECT_EQ(tree(), before);
    EXPECT_EQ(project.run({"status"}).substr(0, 15), "Branch 'master'");
}

TEST_F(SwitchCommand, RefusesToReplaceWhatTheRulesHide) {
    project.write({{".qrv/properties/ignore", "roof.*\n"}, {"new/roof.dwg", "hidden work"}});
    const auto before = tree();
    EXPECT_EQ(switchTo("side"), (Outcome{1, "", noRoom + "new/roof.dwg\n"}));
    EXPECT_EQ(tree(), before);
}

TEST_F(SwitchCommand, RefusesToReplaceALink) {
    const qrv_test::TemporaryFolder elsewhere;
    writeFile(elsewhere / "roof.dwg", "somebody else's");
    fs::create_directory(project / "new");
    fs::create_symlink(elsewhere / "roof.dwg", project / "new/roof.dwg");
    EXPECT_EQ(switchTo("side"), (Outcome{1, "", noRoom + "new/roof.dwg\n"}));
    fs::remove_all(project / "new");
    fs::create_directory_symlink(elsewhere.path(), project / "new");
    EXPECT_EQ(switchTo("side"), (Outcome{1, "", noRoom + "new/roof.dwg\n"}));
    EXPECT_EQ(readFile(elsewhere / "roof.dwg"), "somebody else's");
    EXPECT_EQ(readFile(project / "plan.dwg"), "plan");
}

TEST_F(SwitchCommand, RefusesToReplaceAFileByAFolder) {
    project.write({{"new", "a file"}});
    EXPECT_EQ(switchTo("side"), (Outcome{1, "", noRoom + "new/roof.dwg\n"}));
    EXPECT_EQ(readFile(project / "new"), "a file");
}

TEST_F(SwitchCommand, TakesEverythingBackWhenAFolderIsInTheWay) {
    fs::create_directories(project / "new/roof.dwg");
    EXPECT_EQ(switchTo("side"),
              (Outcome{1, "", "qrv: 'new/roof.dwg' cannot be written: Is a directory\n"}));
    auto expected = onMaster;
    expected["new/"] = "";
    expected["new/roof.dwg/"] = "";
    EXPECT_EQ(tree(), expected);
    fs::remove_all(project / "new");
    EXPECT_EQ(switchTo("side").status, 0);
    EXPECT_EQ(tree(), onSide);
}

TEST_F(SwitchCommand, LetsAFileTakeThePlaceOfAFolderAndBack) {
    project.run({"switch", "-c", "swapped"});
    fs::remove_all(project / "old");
    fs::remove(project / "plan.dwg");
    project.write({{"old", "now a file"}, {"plan.dwg/part.txt", "now a folder"}});
    project.commit("Swapped");
    const auto swapped = tree();
    EXPECT_EQ(switchTo("master").status, 0);
    EXPECT_EQ(tree(), onMaster);
    EXPECT_EQ(switchTo("swapped").status, 0);
    EXPECT_EQ(tree(), swapped);
}

TEST_F(SwitchCommand, KeepsAFolderThatHoldsSomethingElse) {
    project.write({{"old/backup.bak", "hidden"}});
    EXPECT_EQ(switchTo("side").status, 0);
    EXPECT_EQ(readFile(project / "old/backup.bak"), "hidden");
    EXPECT_FALSE(fs::exists(project / "old/list.csv"));
}

TEST_F(SwitchCommand, ChangesNamesInLettersOnly) {
    project.run({"switch", "-c", "letters"});
    fs::rename(project / "old/list.csv", project / "old/LIST.csv");
    project.commit("Letters");
    EXPECT_EQ(switchTo("master").status, 0);
    EXPECT_EQ(tree(), onMaster);
    EXPECT_EQ(switchTo("letters").status, 0);
    EXPECT_TRUE(fs::exists(project / "old/LIST.csv"));
    EXPECT_FALSE(fs::exists(project / "old/list.csv"));
}

TEST_F(SwitchCommand, BringsTheIgnoreRulesOfTheBranch) {
    project.run({"switch", "-c", "rules"});
    project.write({{".qrv/properties/ignore", "*.tmp\n"}});
    project.commit("Rules");
    project.write({{"a.tmp", "hidden"}});
    EXPECT_EQ(switchTo("master").status, 0);
    EXPECT_NE(project.run({"status"}).find("  added     a.tmp\n"), std::string::npos);
}

TEST_F(SwitchCommand, MovesManyFiles) {
    project.run({"switch", "-c", "many"});
    for (int number = 0; number < 450; ++number)
        project.write({{"many/" + std::to_string(number) + ".txt", std::to_string(number)}});
    project.commit("Many");
    const auto many = tree();
    EXPECT_EQ(switchTo("master").output, "On branch 'master'; files changed: 450\n");
    EXPECT_EQ(tree(), onMaster);
    EXPECT_EQ(switchTo("many").output, "On branch 'many'; files changed: 450\n");
    EXPECT_EQ(tree(), many);
}

}  // namespace
