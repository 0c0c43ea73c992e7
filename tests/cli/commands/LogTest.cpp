#include <tests/cli/commands/HistoryProject.h>
#include <tests/engine/history/Repository.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using common::RefType;
using qrv_test::file;
using qrv_test::HistoryProject;
using qrv_test::Outcome;
using qrv_test::removal;
using qrv_test::Repository;
using qrv_test::runQrv;

std::string shortOf(const OdString& hash) {
    return hash.left(10).toNarrow();
}

/// Three commits on "master", of which the second renames a file.
class LogCommand : public testing::Test {
protected:
    LogCommand() {
        runQrv(repository.folder.path(), {"init"});
        first = repository.add({}, "First", {file("old.txt", 'a'), file("plans/a", 'b')});
        second = repository.add({first}, "Second\n\nat length",
                                {file("new.txt", 'a', 1, "old.txt"), removal("old.txt")});
        third = repository.add({second}, "Third\x1B", {file("plans/a", 'c')});
        repository.history.setReference(L"master", RefType::Branch, third);
    }

    Outcome log(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "log");
        return runQrv(repository.folder.path(), std::move(arguments));
    }

    Repository repository;
    OdString first;
    OdString second;
    OdString third;
    // All are of the same second.
    std::string rowOfFirst() const {
        return "1  " + shortOf(first) + "  First\n    1 ⦁ Ada ⦁ Mar 5, 2024\n";
    }
    std::string rowOfSecond() const {
        return "2  " + shortOf(second) + "  Second\n    2 ⦁ Ada ⦁ Mar 5, 2024\n";
    }
    std::string rowOfThird() const {
        return "3  " + shortOf(third) + "  Third\\x1B (master)\n    3 ⦁ Ada ⦁ Mar 5, 2024\n";
    }
};

TEST_F(LogCommand, ListsTheCommitsNewestFirst) {
    EXPECT_EQ(log({}), (Outcome{0, rowOfThird() + rowOfSecond() + rowOfFirst(), ""}));
}

TEST_F(LogCommand, BeginsWithTheCommitThatIsNamed) {
    EXPECT_EQ(log({"2"}), (Outcome{0, rowOfSecond() + rowOfFirst(), ""}));
    EXPECT_EQ(log({"HEAD", "-n", "1"}), (Outcome{0, rowOfThird(), ""}));
    EXPECT_EQ(log({"fourth"}),
              (Outcome{1, "", "qrv: There is no commit, branch or tag 'fourth'\n"}));
}

TEST_F(LogCommand, StopsAfterAsManyAsAreWanted) {
    EXPECT_EQ(log({"-n", "2"}), (Outcome{0, rowOfThird() + rowOfSecond(), ""}));
    EXPECT_EQ(log({"-n", "100"}).output, log({}).output);
    EXPECT_EQ(log({"-n", "007"}).output, log({}).output);
}

// The answer to 0 held the largest real number there is, with 309 digits: the parser's own check
// names the bounds.
TEST_F(LogCommand, NamesANumberThatIsNone) {
    for (const std::string count : {"0", "00", "-1", "x", "", "1.5"})
        EXPECT_EQ(
            log({"-n", count}),
            (Outcome{2, "", "qrv: -n: '" + count + "' is no number above 0 (see qrv --help)\n"}));
    EXPECT_EQ(log({"-n", std::string(30, '9')}).output, log({}).output);
}

TEST_F(LogCommand, NamesBranchesAndTags) {
    repository.history.setReference(L"side", RefType::Branch, first);
    repository.history.setReference(L"v1", RefType::Tag, first);
    EXPECT_EQ(
        log({"1"}),
        (Outcome{0, "1  " + shortOf(first) + "  First (side, tag v1)\n    1 ⦁ Ada ⦁ Mar 5, 2024\n",
                 ""}));
}

TEST_F(LogCommand, FollowsAFileThroughItsNames) {
    EXPECT_EQ(log({"--path", "new.txt"}), (Outcome{0, rowOfSecond() + rowOfFirst(), ""}));
    EXPECT_EQ(log({"--path", "new.txt", "-n", "1"}), (Outcome{0, rowOfSecond(), ""}));
    EXPECT_EQ(log({"--path", "old.txt"}), (Outcome{0, rowOfSecond() + rowOfFirst(), ""}));
    EXPECT_EQ(log({"--path", "plans"}), (Outcome{0, rowOfThird() + rowOfFirst(), ""}));
}

TEST_F(LogCommand, FailsForAPathThatNoCommitChanged) {
    EXPECT_EQ(log({"--path", "x\n"}), (Outcome{1, "", "qrv: No commit has changed 'x\\x0A'\n"}));
    EXPECT_EQ(log({"--path", "/x"}), (Outcome{1, "",
                                              "qrv: '/x' lies outside the repository '" +
                                                  repository.root.path().toNarrow() + "'\n"}));
}

TEST_F(LogCommand, PrintsJson) {
    repository.history.setReference(L"v1", RefType::Tag, second);
    EXPECT_EQ(log({"2", "-n", "1", "--json"}), (Outcome{0,
                                                        R"([
    {
        "author" : "Ada",
        "hash" : ")" + second.toNarrow() +
                                                            R"(",
        "message" : "Second\n\nat length",
        "number" : 2,
        "parents" : [
            ")" + first.toNarrow() +
                                                            R"("
        ],
        "references" : [
            {
                "name" : "v1",
                "type" : "tag"
            }
        ],
        "time" : "2024-03-05T14:07:09Z"
    }
]
)",
                                                        ""}));
}

TEST_F(LogCommand, ShowsOfAnAuthorOnlyTheName) {
    auto commit = qrv_test::newCommit({third}, "Fourth");
    commit.author = L"ada@office";
    const OdString fourth = repository.history.add(commit).hash;
    EXPECT_EQ(log({"4", "-n", "1"}),
              (Outcome{0, "4  " + shortOf(fourth) + "  Fourth\n    4 ⦁ ada ⦁ Mar 5, 2024\n", ""}));
}

TEST(LogCommandOfANewRepository, SaysThatThereIsNoCommit) {
    const HistoryProject project;
    EXPECT_EQ(project.qrv({"log"}),
              (Outcome{0, "There is no commit yet on the branch 'master'\n", ""}));
    EXPECT_EQ(project.qrv({"log", "--json"}), (Outcome{0, "[\n]\n", ""}));
    EXPECT_EQ(project.qrv({"log", "HEAD"}),
              (Outcome{1, "", "qrv: There is no commit yet on the branch 'master'\n"}));
}

TEST(LogCommandOfANewCommit, TellsItsAge) {
    const HistoryProject project;
    project.write({{"a", "a"}});
    project.commit("Today");
    const std::string log = project.run({"log"});
    EXPECT_EQ(log.substr(15), "Today (master)\n    1 ⦁ ada ⦁ less than a minute ago\n");
}

}  // namespace
