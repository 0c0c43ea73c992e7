#include <tests/cli/commands/HistoryProject.h>
#include <tests/engine/storage/OldForms.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::contentsOf;
using qrv_test::HistoryProject;
using qrv_test::Outcome;
using qrv_test::readFile;
using qrv_test::runQrv;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

const std::string keptNowhere =
    "qrv: These files have changes that are kept nowhere (--force replaces them):;   ";
const std::string noRoom =
    "qrv: These files have no room, because something that is in no commit "
    "has their name or that of a folder above them:;   ";

/// Two commits that differ in "plan.dwg" and "sub/list.csv".
class RestoreCommand : public testing::Test {
protected:
    RestoreCommand() {
        project.write({{"plan.dwg", "plan 1"}, {"sub/list.csv", "1"}, {"sub/a.txt", "a"}});
        project.commit("First");
        project.write({{"plan.dwg", "plan 2"}, {"sub/list.csv", "2"}});
        project.commit("Second");
    }

    Outcome restore(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "restore");
        return project.qrv(arguments);
    }

    const HistoryProject project;
};

TEST_F(RestoreCommand, BringsBackWhatIsGone) {
    fs::remove_all(project / "sub");
    fs::remove(project / "plan.dwg");
    EXPECT_EQ(restore({"sub", "plan.dwg"}),
              (Outcome{0, "  plan.dwg\n  sub/a.txt\n  sub/list.csv\nFiles restored: 3\n", ""}));
    EXPECT_EQ(readFile(project / "plan.dwg"), "plan 2");
    EXPECT_EQ(readFile(project / "sub/list.csv"), "2");
    EXPECT_NE(project.run({"status"}).find("Nothing has changed"), std::string::npos);
}

// The answer was "filesystem error: cannot make absolute path: Invalid argument": an empty name
// reached the standard library, which throws for it.
TEST_F(RestoreCommand, RefusesAFolderWithoutAName) {
    EXPECT_EQ(restore({"plan.dwg", "--to", ""}),
              (Outcome{2, "", "qrv: --to: A folder's name cannot be empty (see qrv --help)\n"}));
}

TEST_F(RestoreCommand, DoesNothingWhereNothingIsToBeDone) {
    EXPECT_EQ(restore({"."}), (Outcome{0, "Files restored: 0\n", ""}));
}

TEST_F(RestoreCommand, BringsAnEarlierVersionAndStaysWhereItIs) {
    EXPECT_EQ(restore({".", "--from", "#1"}),
              (Outcome{0, "  plan.dwg\n  sub/list.csv\nFiles restored: 2\n", ""}));
    EXPECT_EQ(project.run({"status"}),
              "Branch 'master', commit 2: Second\n"
              "\n"
              "Changed, not staged (qrv add PATH):\n"
              "  modified  plan.dwg\n"
              "  modified  sub/list.csv\n");
    // Both are stored versions: nothing is lost when they go.
    EXPECT_EQ(restore({"."}).status, 0);
    EXPECT_EQ(readFile(project / "plan.dwg"), "plan 2");
}

TEST_F(RestoreCommand, RefusesToReplaceWhatIsKeptNowhere) {
    project.write({{"plan.dwg", "a day's work"}, {"sub/list.csv", "another day's"}});
    const auto before = contentsOf(project / "sub");
    EXPECT_EQ(restore({"."}), (Outcome{1, "", keptNowhere + "plan.dwg;   sub/list.csv\n"}));
    EXPECT_EQ(readFile(project / "plan.dwg"), "a day's work");
    EXPECT_EQ(contentsOf(project / "sub"), before);
}

TEST_F(RestoreCommand, KeepsWhatItReplacesByForce) {
    project.write({{"sub/list.csv", "a day's work"}});
    const Outcome forced = restore({"sub", "--force"});
    EXPECT_EQ(forced.status, 0);
    const std::string note = "qrv: Note: what 'sub/list.csv' held is kept as ";
    ASSERT_EQ(forced.messages.substr(0, note.size()), note);
    const std::string kept = forced.messages.substr(note.size(), 67);
    EXPECT_EQ(kept.substr(0, 3), "po:");
    EXPECT_EQ(qrv_test::storedContents(project.folder, OdString::fromNarrow(kept)), "a day's work");
    EXPECT_EQ(readFile(project / "sub/list.csv"), "2");
}

TEST_F(RestoreCommand, OnlySaysWhatItWouldDo) {
    fs::remove(project / "plan.dwg");
    project.write({{"sub/list.csv", "unsaved"}});
    const auto before = contentsOf(project.folder.path());
    EXPECT_EQ(restore({"plan.dwg", "--dry-run"}),
              (Outcome{0, "  plan.dwg\nFiles that would be restored: 1\n", ""}));
    EXPECT_EQ(restore({".", "--dry-run"}), (Outcome{1, "", keptNowhere + "sub/list.csv\n"}));
    EXPECT_EQ(restore({".", "--dry-run", "--force"}),
              (Outcome{0, "  plan.dwg\n  sub/list.csv\nFiles that would be restored: 2\n", ""}));
    EXPECT_EQ(contentsOf(project.folder.path()), before);
}

TEST_F(RestoreCommand, PrintsJsonWhenAsked) {
    fs::remove(project / "plan.dwg");
    EXPECT_EQ(restore({".", "--json"}), (Outcome{0, "[\n    \"plan.dwg\"\n]\n", ""}));
}

TEST_F(RestoreCommand, TakesPathsFromTheFolderThatItIsIn) {
    fs::remove(project / "sub/a.txt");
    fs::remove(project / "plan.dwg");
    EXPECT_EQ(runQrv(project / "sub", {"restore", "."}, project.environment),
              (Outcome{0, "  sub/a.txt\nFiles restored: 1\n", ""}));
}

TEST_F(RestoreCommand, RefusesNamesThatAreWrong) {
    EXPECT_EQ(restore({"roof.dwg"}), (Outcome{1, "", "qrv: 'roof.dwg' is not in the commit\n"}));
    EXPECT_EQ(restore({"plan.dwg", "--from", "3"}),
              (Outcome{1, "", "qrv: There is no commit, branch or tag '3'\n"}));
    EXPECT_EQ(restore({"/etc/hosts"}).status, 1);
    EXPECT_EQ(restore({}).status, 2);
}

TEST_F(RestoreCommand, RefusesToReplaceWhatTheRulesHide) {
    project.run({"switch", "-c", "rules"});
    fs::remove(project / "plan.dwg");
    project.write({{".qrv/properties/ignore", "plan.*\n"}});
    project.commit("Rules");
    project.write({{"plan.dwg", "hidden work"}});
    EXPECT_EQ(restore({"plan.dwg", "--from", "1"}), (Outcome{1, "", noRoom + "plan.dwg\n"}));
    EXPECT_EQ(restore({"plan.dwg", "--from", "1", "--force"}).status, 1);
    EXPECT_EQ(readFile(project / "plan.dwg"), "hidden work");
}

TEST_F(RestoreCommand, RefusesToWriteThroughALink) {
    const TemporaryFolder elsewhere;
    writeFile(elsewhere / "list.csv", "somebody else's");
    fs::remove_all(project / "sub");
    fs::create_directory_symlink(elsewhere.path(), project / "sub");
    EXPECT_EQ(restore({"sub/list.csv", "--force"}), (Outcome{1, "", noRoom + "sub/list.csv\n"}));
    fs::remove(project / "plan.dwg");
    fs::create_symlink(elsewhere / "list.csv", project / "plan.dwg");
    EXPECT_EQ(restore({"plan.dwg", "--force"}), (Outcome{1, "", noRoom + "plan.dwg\n"}));
    EXPECT_EQ(contentsOf(elsewhere.path()),
              (std::map<std::string, std::string>{{"list.csv", "somebody else's"}}));
}

TEST_F(RestoreCommand, RefusesToReplaceAFileByAFolder) {
    fs::remove_all(project / "sub");
    project.write({{"sub", "a file"}});
    EXPECT_EQ(restore({"sub/a.txt", "--force"}), (Outcome{1, "", noRoom + "sub/a.txt\n"}));
    EXPECT_EQ(readFile(project / "sub"), "a file");
}

TEST_F(RestoreCommand, WritesIntoAnotherFolder) {
    const TemporaryFolder target;
    const std::string folder = target / "copy";
    const auto before = contentsOf(project / "sub");
    EXPECT_EQ(restore({"plan.dwg", "sub", "--from", "1", "--to", folder}).output,
              "  plan.dwg\n  sub/a.txt\n  sub/list.csv\nFiles restored: 3\n");
    EXPECT_EQ(
        contentsOf(folder),
        (std::map<std::string, std::string>{
            {"plan.dwg", "plan 1"}, {"sub/", ""}, {"sub/a.txt", "a"}, {"sub/list.csv", "1"}}));
    EXPECT_EQ(contentsOf(project / "sub"), before);
}

TEST_F(RestoreCommand, ReplacesNothingInAnotherFolderUnasked) {
    const TemporaryFolder target;
    writeFile(target / "plan.dwg", "mine");
    EXPECT_EQ(restore({"plan.dwg", "--to", target.path()}),
              (Outcome{1, "",
                       "qrv: '" + (target / "plan.dwg").string() +
                           "' is there already (--force replaces it)\n"}));
    EXPECT_EQ(readFile(target / "plan.dwg"), "mine");
    EXPECT_EQ(restore({"plan.dwg", "--to", target.path(), "--force"}).status, 0);
    EXPECT_EQ(readFile(target / "plan.dwg"), "plan 2");
}

TEST_F(RestoreCommand, TakesNoFolderOfTheRepositoryForAnotherOne) {
    project.write({{"plan.dwg", "a day's work"}});
    for (const char* const folder : {".", "sub", "new", ".qrv"}) {
        EXPECT_EQ(restore({"plan.dwg", "--to", folder, "--force"}),
                  (Outcome{1, "",
                           "qrv: '" + std::string(folder) +
                               "' lies in the repository (without --to, its files are replaced "
                               "with care)\n"}));
    }
    EXPECT_EQ(readFile(project / "plan.dwg"), "a day's work");
    EXPECT_FALSE(fs::exists(project / "new"));
}

// Symptom: a file was written outside of the folder that was named, through a link in it.
// Cause: the folders below it were made and opened by their paths.
TEST_F(RestoreCommand, FollowsNoLinkInAnotherFolder) {
    const TemporaryFolder target;
    const TemporaryFolder elsewhere;
    writeFile(elsewhere / "plan", "somebody else's");
    fs::create_directory_symlink(elsewhere.path(), target / "sub");
    fs::create_symlink(elsewhere / "plan", target / "plan.dwg");
    const auto before = contentsOf(elsewhere.path());
    for (const char* const path : {"sub/a.txt", "plan.dwg"})
        EXPECT_EQ(restore({path, "--to", target.path()}).status, 1) << path;
    EXPECT_EQ(restore({"sub/a.txt", "--to", target.path(), "--force"}),
              (Outcome{1, "",
                       "qrv: 'sub/a.txt' cannot be written: it is a symbolic link, or one leads to "
                       "it\n"}));
    EXPECT_EQ(contentsOf(elsewhere.path()), before);
    EXPECT_EQ(restore({"plan.dwg", "--to", target.path(), "--force"}).status, 0);
    EXPECT_EQ(contentsOf(elsewhere.path()), before);
    EXPECT_EQ(readFile(target / "plan.dwg"), "plan 2");
}

// Symptom: a folder with restored files passed for a repository, and a broken one.
// Cause: the versioned files of `.qrv/properties` were written there, too.
TEST_F(RestoreCommand, MakesNoRepositoryOfAnotherFolder) {
    const TemporaryFolder target;
    EXPECT_EQ(restore({".", "--to", target.path()}).messages,
              "qrv: Note: files left out because they belong to the repository: 1\n");
    EXPECT_FALSE(fs::exists(target / ".qrv"));
    EXPECT_EQ(readFile(target / "plan.dwg"), "plan 2");
    EXPECT_EQ(restore({".qrv/properties/ignore", "--to", target.path()}),
              (Outcome{1, "",
                       "qrv: '.qrv/properties/ignore' belongs to the repository and is not written "
                       "anywhere else (qrv show prints it)\n"}));
}

TEST_F(RestoreCommand, OnlySaysWhatItWouldWriteIntoAnotherFolder) {
    const TemporaryFolder target;
    EXPECT_EQ(restore({"plan.dwg", "--to", target.path(), "--dry-run"}),
              (Outcome{0, "  plan.dwg\nFiles that would be restored: 1\n", ""}));
    EXPECT_TRUE(fs::is_empty(target.path()));
}

TEST_F(RestoreCommand, TellsADamagedVersionAndLeavesTheFile) {
    qrv_test::toOldForms(project.folder);
    for (const std::string& name : qrv_test::listTree(project / ".qrv/objects")) {
        fs::permissions(project / (".qrv/objects/" + name), fs::perms(0644));
        writeFile(project / (".qrv/objects/" + name), "x");
    }
    fs::remove(project / "sub/a.txt");
    const Outcome outcome = restore({"sub/a.txt"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.messages.find("its contents have another digest"), std::string::npos);
    EXPECT_FALSE(fs::exists(project / "sub/a.txt"));
}

}  // namespace
