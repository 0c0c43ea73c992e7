#include <sys/Lock.h>
#include <tests/cli/commands/HistoryProject.h>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::contentsOf;
using qrv_test::HistoryProject;
using qrv_test::Outcome;
using qrv_test::runQrv;
using qrv_test::runShell;
using qrv_test::writeFile;

class StatusCommand : public testing::Test {
protected:
    /// The first commit, with two files beside the ignore file.
    void begin() const {
        project.write({{"plan.dwg", "plan"}, {"list.csv", "3"}});
        project.commit("First");
    }
    Outcome status() const { return project.qrv({"status"}); }

    const HistoryProject project;
    const std::string root = fs::canonical(project.folder.path());
};

TEST_F(StatusCommand, ShowsANewRepository) {
    EXPECT_EQ(status(), (Outcome{0,
                                 "Branch 'master', no commit yet\n"
                                 "\n"
                                 "Changed, not staged (qrv add PATH):\n"
                                 "  added     .qrv/properties/ignore\n",
                                 ""}));
}

TEST_F(StatusCommand, ShowsAQuietRepository) {
    begin();
    EXPECT_EQ(status(), (Outcome{0,
                                 "Branch 'master', commit 1: First\n"
                                 "Nothing has changed; files: 3\n",
                                 ""}));
}

TEST_F(StatusCommand, ListsOnlyPathsForOtherPrograms) {
    using namespace std::string_literals;
    begin();
    EXPECT_EQ(project.qrv({"status", "--names"}), (Outcome{0, "", ""}));
    project.write({{"plan.dwg", "plan 2"}, {"b\x1B\n\xE4", "x"}, {"a", "x"}});
    fs::remove(project / "list.csv");
    project.run({"add", "plan.dwg"});
    EXPECT_EQ(project.qrv({"status", "--names"}),
              (Outcome{0, "a\nb\x1B\n\xE4\nlist.csv\nplan.dwg\n", ""}));
    EXPECT_EQ(project.qrv({"status", "--names", "-0"}),
              (Outcome{0, "a\0b\x1B\n\xE4\0list.csv\0plan.dwg\0"s, ""}));
    EXPECT_EQ(project.qrv({"status", "-0"}).status, 2);
    EXPECT_EQ(project.qrv({"status", "--names", "--json"}).status, 2);
}

TEST_F(StatusCommand, ShowsWhatIsStagedChangedAndRenamed) {
    begin();
    project.write({{"list.csv", "4"}, {"sub/new\nname.txt", "n"}});
    project.run({"add", "list.csv"});
    fs::rename(project / "plan.dwg", project / "Plan.dwg");
    EXPECT_EQ(status(), (Outcome{0,
                                 "Branch 'master', commit 1: First\n"
                                 "\n"
                                 "Staged for the next commit:\n"
                                 "  modified  list.csv\n"
                                 "\n"
                                 "Changed, not staged (qrv add PATH):\n"
                                 "  added     Plan.dwg\n"
                                 "  removed   plan.dwg\n"
                                 "  added     sub/new\\x0Aname.txt\n"
                                 "\n"
                                 "Renamed:\n"
                                 "  plan.dwg -> Plan.dwg\n",
                                 ""}));
}

TEST_F(StatusCommand, PrintsJsonWhenAsked) {
    project.write({{"a.txt", "1"}, {"b.txt", "2"}});
    project.run({"add", "a.txt"});
    EXPECT_EQ(project.qrv({"status", "--json"}), (Outcome{0,
                                                          R"({
    "branch" : "master",
    "conflicts" : [
    ],
    "files" : 3,
    "renames" : [
    ],
    "root" : ")" + root + R"(",
    "staged" : [
        {
            "change" : "added",
            "path" : "a.txt"
        }
    ],
    "unstaged" : [
        {
            "change" : "added",
            "path" : ".qrv/properties/ignore"
        },
        {
            "change" : "added",
            "path" : "b.txt"
        }
    ]
}
)",
                                                          ""}));
}

TEST_F(StatusCommand, FindsTheRepositoryFromASubFolderOrAnArgument) {
    begin();
    fs::create_directory(project / "sub");
    EXPECT_EQ(runQrv(project / "sub", {"status"}), status());
    EXPECT_EQ(runQrv("/", {"status", root}), status());
}

TEST_F(StatusCommand, NoticesAChangeThatKeepsSizeAndTime) {
    begin();
    const fs::file_time_type time = fs::last_write_time(project / "list.csv");
    EXPECT_EQ(status().status, 0);
    project.write({{"list.csv", "5"}});
    fs::last_write_time(project / "list.csv", time);
    EXPECT_NE(status().output.find("  modified  list.csv\n"), std::string::npos);
}

TEST_F(StatusCommand, TakesAFileThatWasOnlyTouchedForUnchanged) {
    begin();
    fs::last_write_time(project / "list.csv", fs::file_time_type::clock::now());
    EXPECT_NE(status().output.find("Nothing has changed"), std::string::npos);
}

TEST_F(StatusCommand, SeesAChangeAlsoBehindATimeThatWasPutBack) {
    begin();
    const fs::file_time_type longAgo = fs::file_time_type::clock::now() - std::chrono::hours(24);
    fs::last_write_time(project / "list.csv", longAgo);
    EXPECT_NE(status().output.find("Nothing has changed"), std::string::npos);
    project.write({{"list.csv", "5"}});
    fs::last_write_time(project / "list.csv", longAgo);
    EXPECT_NE(status().output.find("  modified  list.csv\n"), std::string::npos);
}

TEST_F(StatusCommand, GoesOnVersioningAFileThatARuleIgnoresLater) {
    begin();
    project.write({{".qrv/properties/ignore", "*.csv\n"}, {"new.csv", "new"}, {"list.csv", "44"}});
    EXPECT_EQ(status().output,
              "Branch 'master', commit 1: First\n"
              "\n"
              "Changed, not staged (qrv add PATH):\n"
              "  modified  .qrv/properties/ignore\n"
              "  modified  list.csv\n");
}

TEST_F(StatusCommand, TakesAFileBehindALinkForGone) {
    project.write({{"plans/roof.dwg", "roof"}});
    begin();
    const qrv_test::TemporaryFolder elsewhere;
    writeFile(elsewhere / "roof.dwg", "roof");
    fs::remove_all(project / "plans");
    fs::create_directory_symlink(elsewhere.path(), project / "plans");
    EXPECT_EQ(status().output,
              "Branch 'master', commit 1: First\n"
              "\n"
              "Changed, not staged (qrv add PATH):\n"
              "  removed   plans/roof.dwg\n");
}

TEST_F(StatusCommand, DoesNotWaitForAnotherProcess) {
    begin();
    const auto held = sys::Lock::tryTake(*sys::Folder::open(project / "."), ".qrv/lock");
    ASSERT_TRUE(held);
    const auto before = contentsOf(project.folder.path());
    EXPECT_EQ(status(), (Outcome{0,
                                 "Branch 'master', commit 1: First\n"
                                 "Nothing has changed; files: 3\n",
                                 ""}));
    EXPECT_EQ(contentsOf(project.folder.path()), before);
}

TEST_F(StatusCommand, NeedsNothingButReading) {
    begin();
    project.write({{"list.csv", "44"}});
    // A mount of its own, which ends with the shell.
    const std::string readOnly =
        "unshare --mount sh -c 'mount --bind \"$PWD\" \"$PWD\" && "
        "mount -o remount,bind,ro \"$PWD\" && cd \"$PWD\" && ";
    if (runShell(project.folder.path(), readOnly + "true'").status != 0)
        GTEST_SKIP() << "Only an administrator can make a folder read-only for everybody.";
    const Outcome seen =
        runShell(project.folder.path(), readOnly + "\"$QRV\" status'", project.environment);
    const Outcome refused =
        runShell(project.folder.path(), readOnly + "\"$QRV\" add --all'", project.environment);
    EXPECT_EQ(seen, (Outcome{0,
                             "Branch 'master', commit 1: First\n"
                             "\n"
                             "Changed, not staged (qrv add PATH):\n"
                             "  modified  list.csv\n",
                             ""}));
    EXPECT_EQ(refused, (Outcome{1, "",
                                "qrv: The repository '" + root +
                                    "' cannot be changed: Read-only file system\n"}));
}

TEST_F(StatusCommand, TellsTheBadLinesOfTheIgnoreFileToo) {
    project.write({{".qrv/properties/ignore", "^["}});
    const Outcome outcome = status();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.messages.substr(0, 68),
              "qrv: An error occurred while parsing the ignored file:\nqrv: Line 1: ");
}

TEST_F(StatusCommand, RefusesAFolderThatIsInNoRepository) {
    EXPECT_EQ(runQrv("/", {"status"}),
              (Outcome{1, "",
                       "qrv: '/.' is not in a repository, nor is any folder above it one (qrv init "
                       "makes one)\n"}));
}

}  // namespace
