#include <sys/Lock.h>
#include <tests/cli/commands/HistoryProject.h>

#include <gmock/gmock.h>
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
using qrv_test::runShell;
using testing::MatchesRegex;

class CommitCommand : public testing::Test {
protected:
    Outcome commit(const std::string& message) const {
        return project.qrv({"commit", "-m", message});
    }
    std::string restored(const std::string& commit, const std::string& path) const {
        const qrv_test::TemporaryFolder target;
        project.run({"restore", path, "--from", commit, "--to", target.path()});
        return readFile(target / path);
    }

    const HistoryProject project;
};

TEST_F(CommitCommand, KeepsTheStagedFilesAndNothingElse) {
    project.write({{"plan.dwg", "plan"}, {"list.csv", "3"}});
    project.run({"add", "plan.dwg"});
    EXPECT_EQ(commit("  The plan\n\n"), (Outcome{0, "Commit 1 on master: The plan\n", ""}));
    EXPECT_EQ(project.run({"status"}),
              "Branch 'master', commit 1: The plan\n"
              "\n"
              "Changed, not staged (qrv add PATH):\n"
              "  added     .qrv/properties/ignore\n"
              "  added     list.csv\n");
    EXPECT_EQ(restored("1", "plan.dwg"), "plan");
}

TEST_F(CommitCommand, PrintsJsonWhenAsked) {
    project.write({{"plan.dwg", "plan"}});
    project.run({"add", "plan.dwg"});
    const Outcome outcome =
        project.qrv({"commit", "-m", "Title\n\nText", "--author", "Grace Hopper", "--json"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, MatchesRegex(R"(\{
    "author" : "Grace Hopper",
    "hash" : "[0-9a-f]+",
    "message" : "Title\\n\\nText",
    "number" : 1,
    "parents" : \[
    \],
    "time" : "20[0-9-]+T[0-9:]+Z"
\}
)"));
}

TEST_F(CommitCommand, NeedsAMessageAndAnAuthor) {
    EXPECT_EQ(commit(" \n\t"),
              (Outcome{1, "", "qrv: A commit needs a message that says what was done\n"}));
    EXPECT_EQ(project.qrv({"commit"}).status, 2);
    EXPECT_EQ(project.qrv({"commit", "-m", "x", "--author", "two\nlines"}),
              (Outcome{1, "",
                       "qrv: 'two\\x0Alines' cannot be an author: it must be one line of plain "
                       "text, not only blanks, of at most 200 characters\n"}));
}

// An author of one blank or of 100,000 letters was taken: only an empty text was refused.
TEST_F(CommitCommand, RefusesAnAuthorThatNobodyCanReadInAList) {
    const std::string all = std::string(40, 'x') + "...";
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {" ", " "},
        {" \u00A0\u3000", " \u00A0\u3000"},
        {"\u200B", "\\u200B"},
        {std::string(201, 'x'), all},
        {std::string(100'000, 'x'), all},
    };
    for (const auto& [author, shown] : cases)
        EXPECT_EQ(project.qrv({"commit", "-m", "x", "--author", author}),
                  (Outcome{1, "",
                           "qrv: '" + shown +
                               "' cannot be an author: it must be one line of plain text, not only "
                               "blanks, of at most 200 characters\n"}));
    project.qrv({"add", "--all"});
    EXPECT_EQ(project.qrv({"commit", "-m", "x", "--author", std::string(200, 'x')}).status, 0);
}

TEST_F(CommitCommand, RefusesAnEmptyStage) {
    EXPECT_EQ(commit("x"), (Outcome{1, "", "qrv: Nothing is staged (qrv add stages files)\n"}));
    project.commit("Everything");
    EXPECT_EQ(commit("x"),
              (Outcome{1, "", "qrv: There are no modified or untracked files for commit.\n"}));
}

TEST_F(CommitCommand, LeavesOutWhatWasPutBackMeanwhile) {
    project.write({{"a.txt", "1"}, {"b.txt", "1"}});
    project.commit("First");
    project.write({{"a.txt", "2"}, {"b.txt", "2"}});
    project.run({"add", "--all"});
    project.write({{"a.txt", "1"}});
    EXPECT_EQ(commit("Second").status, 0);
    const std::string shown = project.run({"show", "--json"});
    EXPECT_EQ(shown.find("a.txt"), std::string::npos);
    EXPECT_NE(shown.find("b.txt"), std::string::npos);
    EXPECT_NE(project.run({"status"}).find("Nothing has changed; files: 3"), std::string::npos);
}

TEST_F(CommitCommand, TakesTheStagedFileAsItIsNow) {
    project.write({{"a.txt", "1"}});
    project.run({"add", "a.txt"});
    project.write({{"a.txt", "22"}});
    EXPECT_EQ(commit("Now").status, 0);
    EXPECT_EQ(restored("HEAD", "a.txt"), "22");
}

TEST_F(CommitCommand, KeepsARemoval) {
    project.write({{"plans/roof.dwg", "roof"}});
    project.commit("First");
    fs::remove_all(project / "plans");
    project.commit("Second");
    EXPECT_EQ(project.qrv({"restore", "plans/roof.dwg"}),
              (Outcome{1, "", "qrv: 'plans/roof.dwg' is not in the commit\n"}));
    EXPECT_EQ(restored("1", "plans/roof.dwg"), "roof");
}

TEST_F(CommitCommand, FollowsARenamedDrawing) {
    project.write({{"plans/roof.dwg", "roof"}});
    project.commit("First");
    fs::rename(project / "plans/roof.dwg", project / "plans/ROOF.dwg");
    project.commit("Second");
    project.write({{"plans/ROOF.dwg", "roof 2"}});
    project.commit("Third");
    const std::string log = project.run({"log", "--path", "plans/ROOF.dwg"});
    for (const char* const title : {"First", "Second", "Third"})
        EXPECT_NE(log.find(title), std::string::npos) << title;
    EXPECT_EQ(restored("1", "plans/roof.dwg"), "roof");
    EXPECT_EQ(restored("3", "plans/ROOF.dwg"), "roof 2");
}

TEST_F(CommitCommand, KeepsFilesWithStrangeNames) {
    const std::string longName = std::string(251, 'n') + ".dwg";
    project.write({{"line\nfeed.txt", "1"},
                   {"sch\xE4"
                    "den.dwg",
                    "2"},
                   {longName, "3"},
                   {"a b/ c", ""}});
    project.commit("Strange");
    EXPECT_EQ(restored("HEAD", "line\nfeed.txt"), "1");
    EXPECT_EQ(restored("HEAD",
                       "sch\xE4"
                       "den.dwg"),
              "2");
    EXPECT_EQ(restored("HEAD", longName), "3");
    EXPECT_EQ(restored("HEAD", "a b/ c"), "");
}

TEST_F(CommitCommand, KeepsTheBytesOfADrawingOfAnySize) {
    std::string bytes;
    for (int number = 0; bytes.size() < 3'000'000; ++number)
        bytes += std::to_string(number * 2654435761LL);
    project.write({{"a.dwg", bytes}, {"a.bin", bytes}});
    project.commit("First");
    std::string changed = bytes;
    changed.insert(1'000'000, "a door");
    project.write({{"a.dwg", changed}, {"a.bin", changed}});
    project.commit("Second");
    for (const char* const name : {"a.dwg", "a.bin"}) {
        EXPECT_TRUE(restored("1", name) == bytes) << name;
        EXPECT_TRUE(restored("2", name) == changed) << name;
    }
}

TEST_F(CommitCommand, MakesNoCommitWhileAFileIsNoFileAnyMore) {
    project.write({{"a.txt", "1"}, {"b.txt", "1"}});
    project.run({"add", "--all"});
    fs::remove(project / "a.txt");
    fs::create_directory(project / "a.txt");
    // What went away before its first commit is nothing to keep.
    EXPECT_EQ(commit("Second"), (Outcome{0, "Commit 1 on master: Second\n", ""}));
    EXPECT_EQ(project.run({"show", "--json"}).find("a.txt"), std::string::npos);
}

TEST_F(CommitCommand, RefusesATreeThatNoDiskCanHold) {
    project.write({{"plans/roof.dwg", "roof"}});
    project.commit("First");
    fs::remove_all(project / "plans");
    project.write({{"plans", "a file"}});
    project.run({"add", "--all"});
    project.run({"unstage", "plans/roof.dwg"});
    EXPECT_EQ(commit("Half"), (Outcome{1, "",
                                       "qrv: 'plans' and 'plans/roof.dwg' cannot be in one commit: "
                                       "one is a file where the other needs a folder\n"}));
    project.run({"add", "plans"});
    EXPECT_EQ(commit("Whole").status, 0);
}

TEST_F(CommitCommand, WaitsForAnotherProcessThatChangesTheRepository) {
    project.write({{"a.txt", "1"}});
    project.run({"add", "--all"});
    const Outcome outcome = runShell(
        project.folder.path(), "flock .qrv/lock sleep 0.5 & sleep 0.1; \"$QRV\" commit -m First",
        project.environment);
    EXPECT_EQ(outcome, (Outcome{0, "Commit 1 on master: First\n", ""}));
}

TEST_F(CommitCommand, GivesUpWhenAnotherProcessKeepsTheRepository) {
    project.write({{"a.txt", "1"}});
    project.run({"add", "--all"});
    const auto held = sys::Lock::tryTake(*sys::Folder::open(project / "."), ".qrv/lock");
    ASSERT_TRUE(held);
    const auto before = contentsOf(project.folder.path());
    const std::string root = fs::canonical(project.folder.path());
    EXPECT_EQ(commit("First"),
              (Outcome{1, "", "qrv: Another process is changing the repository '" + root + "'\n"}));
    EXPECT_EQ(contentsOf(project.folder.path()), before);
}

TEST_F(CommitCommand, WritesIntoTheActivityLog) {
    project.write({{"a.txt", "1"}});
    project.commit("First");
    EXPECT_NE(readFile(project / ".qrv/qrv.log").find("commit 1 on 'master'"), std::string::npos);
}

}  // namespace
