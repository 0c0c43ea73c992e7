#include <tests/cli/commands/HistoryProject.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::HistoryProject;
using qrv_test::Outcome;
using qrv_test::runQrv;

/// One commit with some drawings and notes.
class AddCommand : public testing::Test {
protected:
    AddCommand() {
        project.write({{"plans/ground.dwg", "ground"},
                       {"plans/old/cellar.dwg", "cellar"},
                       {"notes/minutes.txt", "minutes"},
                       {"list.csv", "flange;3"}});
        project.commit("First");
    }

    Outcome addIn(const std::string& folder, const std::vector<std::string>& arguments) const {
        std::vector<std::string> all = {"add"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return runQrv(project / folder, all, project.environment);
    }
    Outcome add(const std::vector<std::string>& arguments) const { return addIn("", arguments); }

    const HistoryProject project;
};

TEST_F(AddCommand, StagesEachKindOfChange) {
    project.write({{"plans/ground.dwg", "ground 2"}, {"plans/roof.dwg", "roof"}});
    fs::remove(project / "list.csv");
    EXPECT_EQ(add({"--all"}), (Outcome{0,
                                       "  removed   list.csv\n"
                                       "  modified  plans/ground.dwg\n"
                                       "  added     plans/roof.dwg\n"
                                       "Staged: 3\n",
                                       ""}));
}

TEST_F(AddCommand, PrintsJsonWhenAsked) {
    project.write({{"plans/roof.dwg", "roof"}});
    fs::remove(project / "list.csv");
    EXPECT_EQ(add({"--all", "--json"}), (Outcome{0,
                                                 R"([
    {
        "change" : "removed",
        "path" : "list.csv"
    },
    {
        "change" : "added",
        "path" : "plans/roof.dwg"
    }
]
)",
                                                 ""}));
}

TEST_F(AddCommand, TakesPathsFromTheFolderThatItIsIn) {
    project.write({{"plans/ground.dwg", "ground 2"}, {"notes/minutes.txt", "minutes 2"}});
    EXPECT_EQ(
        addIn("plans", {"ground.dwg", "../notes/minutes.txt"}),
        (Outcome{0, "  modified  notes/minutes.txt\n  modified  plans/ground.dwg\nStaged: 2\n",
                 ""}));
}

TEST_F(AddCommand, TakesWholeFoldersAndNothingBeside) {
    project.write({{"plans/old/cellar.dwg", "2"}, {"plans/ground.dwg", "2"}, {"plans 2.txt", "2"}});
    EXPECT_EQ(
        add({"plans/"}),
        (Outcome{0, "  modified  plans/ground.dwg\n  modified  plans/old/cellar.dwg\nStaged: 2\n",
                 ""}));
    EXPECT_EQ(addIn("plans/old", {"."}),
              (Outcome{0, "  modified  plans/old/cellar.dwg\nStaged: 1\n", ""}));
}

TEST_F(AddCommand, StagesAFileThatIsGone) {
    fs::remove_all(project / "plans");
    EXPECT_EQ(add({"plans/old/cellar.dwg"}),
              (Outcome{0, "  removed   plans/old/cellar.dwg\nStaged: 1\n", ""}));
}

TEST_F(AddCommand, StagesBothHalvesOfARenaming) {
    fs::rename(project / "list.csv", project / "parts.csv");
    EXPECT_EQ(add({"parts.csv"}),
              (Outcome{0, "  removed   list.csv\n  added     parts.csv\nStaged: 2\n", ""}));
    project.run({"unstage", "--all"});
    EXPECT_EQ(add({"list.csv"}),
              (Outcome{0, "  removed   list.csv\n  added     parts.csv\nStaged: 2\n", ""}));
}

TEST_F(AddCommand, FindsAFileByTheEndOfItsName) {
    project.write({{"plans/ground.dwg", "ground 2"}});
    EXPECT_EQ(add({"ground"}), (Outcome{0, "  modified  plans/ground.dwg\nStaged: 1\n", ""}));
    project.write({{"plans/old/ground.dwg", "another"}});
    EXPECT_EQ(add({"ground"}), (Outcome{1, "",
                                        "qrv: Several files end in 'ground': 2; "
                                        "  plans/ground.dwg;   plans/old/ground.dwg\n"}));
}

// A word was an expression: "*.dxf" became ".**.dxf", which never came to an end and held the lock.
TEST_F(AddCommand, TakesAWordForAGlobAndNeverForAnExpression) {
    project.write({{"plans/ground.dwg", "2"},
                   {"plans/roof.dxf", "new"},
                   {"roof.dxf", "new"},
                   {"list.csv", "2"},
                   {"plans/old/cellar.dwg", "2"}});
    const auto unstageAll = [this] { project.run({"unstage", "--all"}); };
    EXPECT_EQ(add({"*.dxf"}),
              (Outcome{0, "  added     plans/roof.dxf\n  added     roof.dxf\nStaged: 2\n", ""}));
    unstageAll();
    EXPECT_EQ(add({"./*.dxf"}), (Outcome{0, "  added     roof.dxf\nStaged: 1\n", ""}));
    unstageAll();
    EXPECT_EQ(
        addIn("plans", {"../l??t.csv", "o*"}),
        (Outcome{0, "  modified  list.csv\n  modified  plans/old/cellar.dwg\nStaged: 2\n", ""}));
    unstageAll();
    for (const char* const word : {"l.st.csv", "(l|x)ist.csv", "list|ground", ".+", "*.d*x",
                                   "(a*)*b.c", "*a*a*a*a*a*a*a*a*a*a*a*a*b"})
        EXPECT_EQ(add({word}).status, 1) << word;
}

TEST_F(AddCommand, NamesWhatMayHaveBeenMeant) {
    project.write({{"plans/ground.dwg", "2"}, {"list.csv", "2"}});
    EXPECT_EQ(add({"grond.dwg"}),
              (Outcome{1, "",
                       "qrv: There is no changed file 'grond.dwg'; did you mean:;   "
                       "plans/ground.dwg\n"}));
    EXPECT_EQ(add({"ROUN"}), (Outcome{1, "",
                                      "qrv: There is no changed file 'ROUN'; did you mean:;   "
                                      "plans/ground.dwg\n"}));
}

TEST_F(AddCommand, SaysWhyNothingIsStaged) {
    EXPECT_EQ(add({"list.csv"}), (Outcome{1, "", "qrv: 'list.csv' has not changed\n"}));
    EXPECT_EQ(add({"roof.dwg"}), (Outcome{1, "", "qrv: There is no changed file 'roof.dwg'\n"}));
    EXPECT_EQ(add({"["}), (Outcome{1, "", "qrv: There is no changed file '['\n"}));
    EXPECT_EQ(add({"notes"}), (Outcome{1, "", "qrv: 'notes/minutes.txt' has not changed\n"}));
    EXPECT_EQ(add({"plans"}), (Outcome{1, "", "qrv: 'plans' has not changed\n"}));
    const std::string root = fs::canonical(project.folder.path());
    EXPECT_EQ(add({"/etc/hosts"}),
              (Outcome{1, "", "qrv: '/etc/hosts' lies outside the repository '" + root + "'\n"}));
}

TEST_F(AddCommand, StagesNothingWhenOneNameIsWrong) {
    project.write({{"list.csv", "flange;4"}});
    EXPECT_EQ(add({"list.csv", "roof.dwg"}).status, 1);
    EXPECT_EQ(project.run({"state"}).find("staged"), std::string::npos);
}

TEST_F(AddCommand, NeedsEitherNamesOrAll) {
    EXPECT_EQ(add({}).status, 2);
    EXPECT_EQ(add({"--all", "list.csv"}).status, 2);
}

TEST_F(AddCommand, LeavesOutWhatTheRulesIgnore) {
    project.write({{"plans/ground.bak", "backup"}, {"plans/ground.dwl", "lock"}});
    EXPECT_EQ(add({"--all"}), (Outcome{0, "Staged: 0\n", ""}));
    EXPECT_EQ(add({"plans/ground.bak"}).status, 1);
}

TEST_F(AddCommand, StagesTheIgnoreFileLikeAnyOther) {
    project.write({{".qrv/properties/ignore", "*.tmp\n"}});
    EXPECT_EQ(add({"--all"}), (Outcome{0, "  modified  .qrv/properties/ignore\nStaged: 1\n", ""}));
}

TEST_F(AddCommand, StagesStrangeNames) {
    const std::string longName = std::string(251, 'n') + ".txt";
    project.write({{"two  blanks.txt", "1"},
                   {"line\nfeed.txt", "2"},
                   {"sch\xE4"
                    "den.txt",
                    "3"},
                   {longName, "4"},
                   {"-x", "5"}});
    const Outcome outcome = add({"--all"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output,
              "  added     -x\n"
              "  added     line\\x0Afeed.txt\n"
              "  added     " +
                  longName +
                  "\n"
                  "  added     sch\\xE4"
                  "den.txt\n"
                  "  added     two  blanks.txt\n"
                  "Staged: 5\n");
    project.run({"commit", "-m", "Strange"});
    EXPECT_NE(project.run({"status"}).find("Nothing has changed"), std::string::npos);
}

TEST_F(AddCommand, LeavesOutOfManyWhatNoRepositoryCanHold) {
    project.write({{"notes/sheet 1:50.txt", "scale"}, {"notes/plain.txt", "plain"}});
    fs::rename(project / "notes/minutes.txt", project / "notes/9:30.txt");
    const std::string note = "' cannot be used as a path: it has a colon in it\n";
    const Outcome expected = {0, "  added     notes/plain.txt\nStaged: 1\n",
                              "qrv: Note: left out: 'notes/9:30.txt" + note +
                                  "qrv: Note: left out: 'notes/sheet 1:50.txt" + note};
    EXPECT_EQ(add({"--all"}), expected);
    EXPECT_EQ(project.qrv({"unstage", "--all"}).status, 0);
    EXPECT_EQ(add({"notes"}), expected);
}

TEST_F(AddCommand, RefusesANamedFileThatNoRepositoryCanHold) {
    project.write({{"plans\\roof.dwg", "roof"}, {"list.csv", "flange;4"}});
    EXPECT_EQ(add({"list.csv", "plans\\roof.dwg"}),
              (Outcome{1, "",
                       "qrv: 'plans\\roof.dwg' cannot be used as a path: it has a backslash in "
                       "it\n"}));
    EXPECT_EQ(project.run({"unstage", "--all"}), "Taken off the stage: 0\n");
}

TEST_F(AddCommand, LeavesOutLinks) {
    fs::create_symlink("list.csv", project / "link.csv");
    fs::create_directory_symlink("plans", project / "linked");
    EXPECT_EQ(add({"--all"}), (Outcome{0, "Staged: 0\n", ""}));
}

TEST_F(AddCommand, FollowsALinkOnTheWayToAFile) {
    fs::create_directory_symlink("plans", project / "linked");
    project.write({{"plans/ground.dwg", "ground 2"}});
    EXPECT_EQ(add({"linked/ground.dwg"}),
              (Outcome{0, "  modified  plans/ground.dwg\nStaged: 1\n", ""}));
}

TEST_F(AddCommand, StagesTheFilesOfAFolderThatBecameALink) {
    const qrv_test::TemporaryFolder elsewhere;
    fs::remove_all(project / "plans");
    fs::create_directory_symlink(elsewhere.path(), project / "plans");
    EXPECT_EQ(add({"plans/ground.dwg"}),
              (Outcome{0, "  removed   plans/ground.dwg\nStaged: 1\n", ""}));
}

TEST_F(AddCommand, TellsARenamingInLettersOnly) {
    fs::rename(project / "list.csv", project / "LIST.csv");
    EXPECT_EQ(add({"--all"}).output, "  added     LIST.csv\n  removed   list.csv\nStaged: 2\n");
}

TEST_F(AddCommand, StagesAFileThatTookTheNameOfAFolder) {
    fs::remove_all(project / "plans");
    project.write({{"plans", "a file"}});
    EXPECT_EQ(add({"--all"}), (Outcome{0,
                                       "  added     plans\n"
                                       "  removed   plans/ground.dwg\n"
                                       "  removed   plans/old/cellar.dwg\n"
                                       "Staged: 3\n",
                                       ""}));
}

}  // namespace
