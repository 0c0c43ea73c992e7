#include <tests/cli/commands/HistoryProject.h>
#include <tests/engine/history/Repository.h>
#include <tests/engine/storage/OldForms.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

using namespace std::string_literals;
using common::RefType;
using qrv_test::file;
using qrv_test::HistoryProject;
using qrv_test::Outcome;
using qrv_test::removal;
using qrv_test::Repository;
using qrv_test::runQrv;

/// Two commits on "master".
class ShowCommand : public testing::Test {
protected:
    ShowCommand() {
        runQrv(repository.folder.path(), {"init"});
        first = repository.add({}, "First",
                               {file("changed", 'a', 120), file("gone", 'b', 7),
                                file("old name", 'c', 3), file("old", 'd', 4)});
        second = repository.add({first}, "Second\n\nat\x1B length",
                                {file("changed", 'f', 340), removal("gone"), file("new", 'e', 12),
                                 file("new name", 'c', 3, "old name"), removal("old name"),
                                 file("newer", '0', 5, "old"), removal("old")});
        repository.history.setReference(L"master", RefType::Branch, second);
    }

    Outcome show(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "show");
        return runQrv(repository.folder.path(), std::move(arguments));
    }

    Repository repository;
    OdString first;
    OdString second;
};

TEST_F(ShowCommand, TellsWhatTheLastCommitDid) {
    EXPECT_EQ(show({}), (Outcome{0,
                                 "Commit 2 (master)\n"
                                 "Hash: " +
                                     second.toNarrow() +
                                     "\n"
                                     "Builds on: " +
                                     first.toNarrow() +
                                     "\n"
                                     "Author: Ada\n"
                                     "Time: 2024-03-05 14:07:09 UTC\n"
                                     "\n"
                                     "    Second\n"
                                     "\n"
                                     "    at\\x1B length\n"
                                     "\n"
                                     "  modified  changed (120 -> 340 bytes)\n"
                                     "  removed   gone (7 bytes)\n"
                                     "  added     new (12 bytes)\n"
                                     "  renamed   old name -> new name (3 bytes)\n"
                                     "  renamed   old -> newer (4 -> 5 bytes)\n",
                                 ""}));
}

TEST_F(ShowCommand, ShowsTheCommitThatIsNamed) {
    repository.history.setReference(L"v1", RefType::Tag, first);
    const Outcome expected = {0,
                              "Commit 1 (tag v1)\n"
                              "Hash: " +
                                  first.toNarrow() +
                                  "\n"
                                  "Author: Ada\n"
                                  "Time: 2024-03-05 14:07:09 UTC\n"
                                  "\n"
                                  "    First\n"
                                  "\n"
                                  "  added     changed (120 bytes)\n"
                                  "  added     gone (7 bytes)\n"
                                  "  added     old (4 bytes)\n"
                                  "  added     old name (3 bytes)\n",
                              ""};
    EXPECT_EQ(show({"v1"}), expected);
    EXPECT_EQ(show({first.toNarrow()}), expected);
}

TEST_F(ShowCommand, ComparesAMergeWithItsFirstParent) {
    const OdString side = repository.add({first}, "Side", {file("side", 'a')});
    const OdString merged = repository.add({second, side}, "Merge", {file("side", 'a')});
    EXPECT_EQ(show({"4"}), (Outcome{0,
                                    "Commit 4\nHash: " + merged.toNarrow() + "\nBuilds on: " +
                                        second.toNarrow() + "\nBuilds on: " + side.toNarrow() +
                                        "\nAuthor: Ada\nTime: 2024-03-05 14:07:09 UTC\n\n"
                                        "    Merge\n\n  added     side (1 bytes)\n",
                                    ""}));
}

TEST_F(ShowCommand, ShowsACommitWithoutChanges) {
    const OdString third = repository.add({second}, "Third");
    EXPECT_EQ(show({"3"}),
              (Outcome{0,
                       "Commit 3\nHash: " + third.toNarrow() + "\nBuilds on: " + second.toNarrow() +
                           "\nAuthor: Ada\nTime: 2024-03-05 14:07:09 UTC\n\n"
                           "    Third\n",
                       ""}));
}

TEST_F(ShowCommand, PrintsJson) {
    const OdString third = repository.add({second}, "Third", {file("changed", 'a', 1)});
    EXPECT_EQ(show({"3", "--json"}), (Outcome{0,
                                              R"({
    "author" : "Ada",
    "changes" : [
        {
            "change" : "modified",
            "digestAfter" : ")" + std::string(64, 'a') +
                                                  R"(",
            "digestBefore" : ")" + std::string(64, 'f') +
                                                  R"(",
            "path" : "changed",
            "sizeAfter" : 1,
            "sizeBefore" : 340
        }
    ],
    "hash" : ")" + third.toNarrow() + R"(",
    "message" : "Third",
    "number" : 3,
    "parents" : [
        ")" + second.toNarrow() + R"("
    ],
    "references" : [
    ],
    "time" : "2024-03-05T14:07:09Z"
}
)",
                                              ""}));
}

TEST_F(ShowCommand, FailsForWhatIsNoCommit) {
    EXPECT_EQ(show({"masters"}), (Outcome{1, "",
                                          "qrv: There is no commit, branch or tag 'masters' (did "
                                          "you mean 'master'?)\n"}));
    EXPECT_EQ(show({"masters:changed"}),
              (Outcome{1, "",
                       "qrv: There is no commit, branch or tag 'masters' (did you mean "
                       "'master'?)\n"}));
}

TEST_F(ShowCommand, PrefersABranchWithAColonToAFile) {
    repository.history.setReference(L"master:gone", RefType::Branch, first);
    EXPECT_EQ(show({"master:gone"}).output.substr(0, 23), "Commit 1 (master:gone)\n");
}

TEST(ShowCommandWithAFile, PrintsItsBytes) {
    const HistoryProject project;
    const std::string bytes = "a\0b\xFF\r\n"s;
    const std::string large(700'000, 'x');
    project.write({{"plans/ü", bytes}, {"large", large}, {"empty", ""}, {"a.dwg", bytes}});
    project.commit("One");
    project.write({{"plans/ü", "other"}, {"large", "other"}, {"a.dwg", "other"}});
    project.commit("Two");
    EXPECT_EQ(project.qrv({"show", "1:plans/ü"}), (Outcome{0, bytes, ""}));
    EXPECT_EQ(project.qrv({"show", "1:large"}), (Outcome{0, large, ""}));
    EXPECT_EQ(project.qrv({"show", "1:empty"}), (Outcome{0, "", ""}));
    EXPECT_EQ(project.qrv({"show", "1:a.dwg"}), (Outcome{0, bytes, ""}));
    EXPECT_EQ(project.qrv({"show", "HEAD:a.dwg"}), (Outcome{0, "other", ""}));
    EXPECT_EQ(runQrv(project / "plans", {"show", "1:ü"}), (Outcome{0, bytes, ""}));
}

TEST(ShowCommandWithAFile, FailsWhenTheCommitHasNone) {
    const HistoryProject project;
    project.write({{"plans/a", "a"}});
    project.commit("One");
    EXPECT_EQ(project.qrv({"show", "1:b"}), (Outcome{1, "", "qrv: 'b' is not in the commit\n"}));
    EXPECT_EQ(project.qrv({"show", "1:plans"}),
              (Outcome{1, "", "qrv: 'plans' is not in the commit\n"}));
    EXPECT_EQ(project.qrv({"show", "1:plans/a", "--json"}),
              (Outcome{1, "", "qrv: --json is for a commit; a file is printed as it is\n"}));
    const std::string root = std::filesystem::canonical(project.folder.path());
    EXPECT_EQ(project.qrv({"show", "1:/etc/passwd"}),
              (Outcome{1, "", "qrv: '/etc/passwd' lies outside the repository '" + root + "'\n"}));
}

TEST(ShowCommandWithAFile, FailsWhenItsContentsAreDamaged) {
    const HistoryProject project;
    project.write({{"a", "contents"}});
    project.commit("One");
    qrv_test::toOldForms(project.folder);
    const std::string digest = "d1b2a59fbea7e20077af9f91b27e95e865061b270be03ff539ab3b73587882e8";
    const std::filesystem::path object = project / (".qrv/objects/" + digest);
    std::filesystem::permissions(object, std::filesystem::perms::owner_all);
    project.write({{".qrv/objects/" + digest, "CONTENTS"}});
    const Outcome shown = project.qrv({"show", "1:a"});
    EXPECT_EQ(shown.status, 1);
    EXPECT_EQ(shown.messages, "qrv: The stored version 'po:" + digest +
                                  "' is damaged: its contents have another digest\n");
}

TEST(ShowCommandOfANewRepository, Fails) {
    const HistoryProject project;
    EXPECT_EQ(project.qrv({"show"}),
              (Outcome{1, "", "qrv: There is no commit yet on the branch 'master'\n"}));
}

}  // namespace
