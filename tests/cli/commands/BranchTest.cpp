#include <tests/cli/commands/HistoryProject.h>
#include <tests/cli/commands/TwoCommits.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using common::RefType;
using qrv_test::HistoryProject;
using qrv_test::Outcome;

class BranchCommand : public qrv_test::TwoCommits {
protected:
    BranchCommand() : TwoCommits("First\nline", "Second\x1B") {}

    Outcome branch(std::vector<std::string> arguments) const {
        return qrv("branch", std::move(arguments));
    }
    Outcome refusal(std::vector<std::string> arguments) const {
        const Outcome before = branch({"--json"});
        const Outcome outcome = branch(std::move(arguments));
        EXPECT_EQ(branch({"--json"}), before);
        return outcome;
    }
};

std::string shortOf(const OdString& hash) {
    return hash.left(10).toNarrow();
}

TEST_F(BranchCommand, ListsOnlyNamesForOtherPrograms) {
    repository.history.setReference(L"side", RefType::Branch, first);
    repository.history.setReference(L"tag", RefType::Tag, first);
    EXPECT_EQ(branch({"--names"}), (Outcome{0, "master\nside\n", ""}));
    EXPECT_EQ(branch({"--names", "--json"}).status, 2);
    EXPECT_EQ(branch({"--names", "new"}).status, 2);
}

TEST_F(BranchCommand, ListsBranchesAndMarksTheCurrentOne) {
    repository.history.setReference(L"a-b\u00FC", RefType::Branch, first);
    repository.history.setReference(L"ground-floor", RefType::Branch, second);
    repository.history.setReference(L"tag", RefType::Tag, first);
    EXPECT_EQ(branch({}), (Outcome{0,
                                   "  a-bü          1  " + shortOf(first) +
                                       "  First\n"
                                       "  ground-floor  2  " +
                                       shortOf(second) +
                                       "  Second\\x1B\n"
                                       "* master        2  " +
                                       shortOf(second) + "  Second\\x1B\n",
                                   ""}));
}

TEST_F(BranchCommand, PrintsJson) {
    repository.history.setReference(L"side", RefType::Branch, first);
    const auto commit = [](const OdString& hash, const std::string& message, int number,
                           const std::string& parents) {
        return R"({
            "author" : "Ada",
            "hash" : ")" +
               hash.toNarrow() + R"(",
            "message" : ")" +
               message + R"(",
            "number" : )" +
               std::to_string(number) + R"(,
            "parents" : [
)" + parents + R"(            ],
            "time" : "2024-03-05T14:07:09Z"
        })";
    };
    const std::string parent = "                \"" + first.toNarrow() + "\"\n";
    EXPECT_EQ(branch({"--json"}), (Outcome{0,
                                           R"([
    {
        "commit" : )" + commit(second, "Second\\u001B", 2, parent) +
                                               R"(,
        "current" : true,
        "name" : "master"
    },
    {
        "commit" : )" + commit(first, "First\\nline", 1, "") +
                                               R"(,
        "current" : false,
        "name" : "side"
    }
]
)",
                                           ""}));
}

TEST_F(BranchCommand, MakesABranchAtTheCurrentCommit) {
    EXPECT_EQ(branch({"side"}),
              (Outcome{0, "Made the branch 'side' at commit 2: Second\\x1B\n", ""}));
    EXPECT_EQ(repository.history.reference(L"side", RefType::Branch), second);
    EXPECT_EQ(branch({}).output.substr(0, 8), "* master");
}

TEST_F(BranchCommand, MakesABranchAtAnotherCommit) {
    EXPECT_EQ(branch({"side", "1"}),
              (Outcome{0, "Made the branch 'side' at commit 1: First\n", ""}));
    EXPECT_EQ(repository.history.reference(L"side", RefType::Branch), first);
}

TEST_F(BranchCommand, PrintsABranchThatItMadeAsJson) {
    EXPECT_EQ(branch({"side", "1", "--json"}), (Outcome{0,
                                                        R"({
    "commit" : {
        "author" : "Ada",
        "hash" : ")" + first.toNarrow() +
                                                            R"(",
        "message" : "First\nline",
        "number" : 1,
        "parents" : [
        ],
        "time" : "2024-03-05T14:07:09Z"
    },
    "name" : "side"
}
)",
                                                        ""}));
}

TEST_F(BranchCommand, RefusesANameThatIsThereOrIsNone) {
    repository.history.setReference(L"side", RefType::Branch, first);
    EXPECT_EQ(refusal({"side"}), (Outcome{1, "", "qrv: There is a branch 'side' already\n"}));
    EXPECT_EQ(refusal({"master", "1"}),
              (Outcome{1, "", "qrv: There is a branch 'master' already\n"}));
    EXPECT_EQ(refusal({"a b"}), (Outcome{1, "",
                                         "qrv: 'a b' cannot be the name of a branch or tag: it has "
                                         "a blank in it\n"}));
    EXPECT_EQ(refusal({"new", "3"}),
              (Outcome{1, "", "qrv: There is no commit, branch or tag '3'\n"}));
}

TEST_F(BranchCommand, DeletesABranchWhoseCommitsAnotherOneHas) {
    repository.history.setReference(L"side", RefType::Branch, first);
    EXPECT_EQ(branch({"--delete", "side"}),
              (Outcome{0, "Deleted the branch 'side', which was at commit 1: First\n", ""}));
    EXPECT_EQ(repository.history.reference(L"side", RefType::Branch), std::nullopt);
    EXPECT_EQ(branch({"--delete", "side"}), (Outcome{1, "", "qrv: There is no branch 'side'\n"}));
}

TEST_F(BranchCommand, DeletesABranchWhoseCommitsATagHas) {
    const OdString third = repository.add({second}, "Third");
    repository.history.setReference(L"side", RefType::Branch, third);
    // A tag of the branch's name is another reference.
    repository.history.setReference(L"side", RefType::Tag, third);
    EXPECT_EQ(branch({"--delete", "side"}),
              (Outcome{0, "Deleted the branch 'side', which was at commit 3: Third\n", ""}));
    EXPECT_EQ(repository.history.reference(L"side", RefType::Tag), third);
}

TEST_F(BranchCommand, DeletesTheOnlyBranchOfACommitOnlyByForce) {
    const OdString third = repository.add({second}, "Third");
    repository.history.setReference(L"side", RefType::Branch, third);
    EXPECT_EQ(refusal({"--delete", "side"}),
              (Outcome{1, "",
                       "qrv: 'side' has commits that are in no other branch or tag (--force "
                       "deletes it all the same)\n"}));
    EXPECT_EQ(branch({"--delete", "side", "--force"}),
              (Outcome{0, "Deleted the branch 'side', which was at commit 3: Third\n", ""}));
    // The commit itself stays.
    EXPECT_EQ(branch({"side", "3"}),
              (Outcome{0, "Made the branch 'side' at commit 3: Third\n", ""}));
}

TEST_F(BranchCommand, NeverDeletesTheCurrentBranch) {
    repository.history.setReference(L"side", RefType::Branch, second);
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--delete", "master"}, {"--delete", "master", "--force"}})
        EXPECT_EQ(refusal(arguments), (Outcome{1, "",
                                               "qrv: 'master' is the current branch (qrv switch "
                                               "goes to another one)\n"}));
}

TEST_F(BranchCommand, SuggestsTheNameOfABranchThatIsThere) {
    EXPECT_EQ(refusal({"--delete", "mastre"}),
              (Outcome{1, "", "qrv: There is no branch 'mastre'; did you mean 'master'?\n"}));
}

TEST_F(BranchCommand, RefusesArgumentsThatDoNotGoTogether) {
    EXPECT_EQ(refusal({"side", "--delete", "side"}).status, 2);
    EXPECT_EQ(refusal({"side", "--force"}).status, 2);
    EXPECT_EQ(refusal({"--delete", "side", "1", "2"}).status, 2);
}

TEST(BranchCommandOfANewRepository, ListsTheBranchToCome) {
    const HistoryProject project;
    EXPECT_EQ(project.qrv({"branch"}), (Outcome{0, "* master  (no commit yet)\n", ""}));
    EXPECT_EQ(project.qrv({"branch", "--json"}), (Outcome{0,
                                                          R"([
    {
        "commit" : null,
        "current" : true,
        "name" : "master"
    }
]
)",
                                                          ""}));
    EXPECT_EQ(project.qrv({"branch", "side"}),
              (Outcome{1, "", "qrv: There is no commit yet on the branch 'master'\n"}));
    EXPECT_EQ(project.qrv({"branch", "master"}),
              (Outcome{1, "", "qrv: There is a branch 'master' already\n"}));
}

TEST(BranchCommandInAProject, MakesABranchToSwitchTo) {
    const HistoryProject project;
    project.write({{"a", "1"}});
    project.commit("One");
    project.run({"branch", "side"});
    project.write({{"a", "2"}});
    project.commit("Two");
    EXPECT_EQ(project.run({"switch", "side"}), "On branch 'side'; files changed: 1\n");
    EXPECT_EQ(qrv_test::readFile(project / "a"), "1");
    EXPECT_EQ(project.run({"log", "-n", "1"}).substr(15, 10), "One (side)");
}

}  // namespace
