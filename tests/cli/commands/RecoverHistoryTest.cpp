#include <engine/database/Database.h>
#include <tests/cli/commands/HistoryProject.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv_test::contentsOf;
using qrv_test::HistoryProject;
using qrv_test::Outcome;
using qrv_test::readFile;
using qrv_test::writeFile;
using testing::HasSubstr;

/// Two branches that were merged, a tag, a renamed drawing, and a branch that was deleted.
class LostAndRebuilt : public testing::Test {
protected:
    LostAndRebuilt() {
        project.write({{"plan.dwg", std::string(5000, 'x')}, {"parts.csv", "1;bolt\n"}});
        project.commit("first");
        project.run({"tag", "v1"});
        project.run({"switch", "-c", "side"});
        fs::rename(project / "plan.dwg", project / "ground.dwg");
        project.commit("second\n\nwith \"quotes\"");
        project.run({"switch", "-c", "short"});
        project.write({{"note.txt", "note"}});
        project.commit("third");
        project.run({"switch", "master"});
        project.write({{"parts.csv", "2;bolts\n"}});
        project.commit("fourth");
        project.run({"merge", "side", "-m", "fifth"});
        project.run({"branch", "--delete", "short", "--force"});
    }

    /// What a person sees of the history.
    std::string seen() const {
        return project.run({"log", "--json"}) + project.run({"branch", "--json"}) +
               project.run({"tag", "--json"}) + project.run({"status"}) +
               project.run({"show", "v1"}) + project.run({"diff", "v1", "HEAD"});
    }
    fs::path database() const { return project / ".qrv/qrv.db"; }
    void expectWhole(const std::string& expected) const {
        EXPECT_EQ(seen(), expected);
        EXPECT_EQ(project.qrv({"verify"}).status, 0) << project.qrv({"verify"});
        project.write({{"new.txt", "new"}});
        project.commit("sixth");
        EXPECT_EQ(project.qrv({"verify"}).status, 0);
    }

    const HistoryProject project;
};

TEST_F(LostAndRebuilt, HistoryThatIsGoneComesBackWithEveryCommit) {
    const std::string expected = seen();
    for (const bool isEmptied : {true, false}) {
        if (isEmptied)
            fs::resize_file(database(), 0);
        else
            fs::remove(database());
        EXPECT_EQ(project.qrv({"recover", "--history"}),
                  (Outcome{0, "Commits made anew: 5\nBranches and tags made anew: 3\n", ""}));
        EXPECT_EQ(seen(), expected);
    }
    expectWhole(expected);
}

TEST_F(LostAndRebuilt, HistoryThatIsDamagedComesBackAndTheDamagedOneIsKept) {
    const std::string expected = seen();
    std::string damaged = readFile(database());
    damaged.replace(damaged.size() / 2, 3000, std::string(3000, '\x7F'));
    writeFile(database(), damaged);
    EXPECT_EQ(project.qrv({"verify"}).status, 1);
    const Outcome outcome = project.qrv({"recover", "--history"});
    EXPECT_THAT(outcome.output, HasSubstr("The damaged history is kept as "
                                          "'.qrv/qrv.db.damaged-1'\n"));
    EXPECT_EQ(readFile(project / ".qrv/qrv.db.damaged-1"), damaged);
    expectWhole(expected);
}

TEST_F(LostAndRebuilt, BranchesAndTagsThatSomebodyChangedComeBack) {
    const std::string expected = seen();
    {
        qrv::Database history(OdString::fromNarrow(database().string()),
                              qrv::Database::Access::readWrite);
        history.execute(
            "UPDATE refs SET number = 1 WHERE name = 'master'; "
            "DELETE FROM refs WHERE name = 'v1'");
    }
    EXPECT_EQ(project.qrv({"log"}).status, 1);
    project.qrv({"recover", "--history"});
    expectWhole(expected);
}

// Symptom: after a sync program had put back an earlier qrv.db, the commits made since were gone
// without a word. Cause: nothing beside the history knew where its branches had pointed.
TEST_F(LostAndRebuilt, HistoryThatIsOlderThanItsRecordIsRefusedAndMended) {
    const std::string older = readFile(database());
    project.write({{"late.txt", "late"}});
    project.commit("late");
    const std::string expected = seen();
    writeFile(database(), older);
    const auto before = contentsOf(project.folder.path());
    for (const std::vector<std::string>& command :
         std::vector<std::vector<std::string>>{{"gc"}, {"unstage", "--all"}, {"tag", "v2"}}) {
        const Outcome outcome = project.qrv(command);
        EXPECT_EQ(outcome.status, 1) << command.front();
        EXPECT_THAT(outcome.messages, HasSubstr("is older than what '.qrv/references' tells"));
    }
    EXPECT_EQ(contentsOf(project.folder.path()), before);
    EXPECT_THAT(project.qrv({"verify"}).output, HasSubstr("is older than what"));
    EXPECT_EQ(project.qrv({"recover", "--history", "--json"}).output,
              "{\n    \"commits\" : 1,\n    \"problems\" : [\n    ],\n    \"references\" : 1,\n"
              "    \"setAside\" : null\n}\n");
    expectWhole(expected);
}

TEST_F(LostAndRebuilt, WholeHistoryIsLeftAsItIs) {
    const std::string bytes = readFile(database());
    EXPECT_EQ(project.qrv({"recover", "--history"}),
              (Outcome{0, "Commits made anew: 0\nBranches and tags made anew: 0\n", ""}));
    EXPECT_EQ(readFile(database()), bytes);
}

TEST_F(LostAndRebuilt, WhatIsKeptNowhereIsTold) {
    fs::remove(database());
    for (const auto& entry : fs::directory_iterator(project / ".qrv/commits")) {
        if (readFile(entry.path()).find("\"message\" : \"first") != std::string::npos)
            fs::remove(entry.path());
    }
    const Outcome outcome = project.qrv({"recover", "--history"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, HasSubstr("Commits made anew: 0\n"));
    EXPECT_THAT(outcome.output, HasSubstr("cannot be made anew: one that it builds on is kept "
                                          "nowhere\n"));
    EXPECT_THAT(outcome.output, HasSubstr("'v1' cannot be made anew: its commit '"));
}

TEST_F(LostAndRebuilt, RecordsOfAnOlderProgramAreMadeWithTheNextChange) {
    fs::remove(project / ".qrv/references");
    fs::remove_all(project / ".qrv/commits");
    EXPECT_EQ(project.qrv({"verify"}).status, 0);
    EXPECT_FALSE(fs::exists(project / ".qrv/commits"));
    project.run({"unstage", "--all"});
    EXPECT_THAT(readFile(project / ".qrv/references"), HasSubstr("\tbranch\tmaster\t-\t"));
    fs::remove(database());
    project.run({"recover", "--history"});
    EXPECT_EQ(project.qrv({"verify"}).status, 0);
    EXPECT_THAT(project.run({"log"}), HasSubstr("fifth"));
}

// Symptom: a merge that was killed left a repository in which verify found damage, for ever.
// Cause: its commit was added before its branch moved, and only moved branches led to a record.
TEST_F(LostAndRebuilt, ANewestCommitWithoutARecordGetsItWithTheNextChange) {
    const std::string newest = project.run({"log", "-n", "1", "--json"});
    const std::string name = "\"hash\" : \"";
    const std::string hash = newest.substr(newest.find(name) + name.size(), 64);
    const fs::path record = project / (".qrv/commits/" + hash);
    ASSERT_TRUE(fs::remove(record)) << newest;
    const Outcome verified = project.qrv({"verify"});
    EXPECT_EQ(verified.status, 0) << verified;
    EXPECT_THAT(verified.output, HasSubstr("are recorded by the next command"));
    project.run({"unstage", "--all"});
    EXPECT_TRUE(fs::exists(record));
}

TEST_F(LostAndRebuilt, RecordsThatAreDamagedAreFound) {
    const fs::path commit = fs::directory_iterator(project / ".qrv/commits")->path();
    writeFile(commit, "x");
    EXPECT_THAT(project.qrv({"verify"}).output, HasSubstr("The record of commit "));
    writeFile(project / ".qrv/references", readFile(project / ".qrv/references") + "x\n");
    EXPECT_THAT(project.qrv({"verify"}).output, HasSubstr("'.qrv/references' is damaged in line"));
    project.run({"recover", "--history"});
    EXPECT_EQ(project.qrv({"verify"}).status, 0) << project.qrv({"verify"});
}

}  // namespace
