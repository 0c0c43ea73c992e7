#include <engine/database/Database.h>
#include <tests/cli/commands/VerifyProject.h>

#include <gmock/gmock.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

namespace {

namespace fs = std::filesystem;
using qrv_test::contentsOf;
using qrv_test::flipByte;
using qrv_test::HistoryProject;
using qrv_test::Outcome;
using qrv_test::readFile;
using qrv_test::runQrv;
using qrv_test::runShell;
using qrv_test::writeFile;

using VerifyCommand = qrv_test::VerifyProject;

std::string replaced(std::string text, const std::string& word, const std::string& other) {
    return text.replace(text.find(word), word.size(), other);
}

TEST_F(VerifyCommand, FindsNothingInAWholeRepository) {
    EXPECT_EQ(project.qrv({"verify"}), (Outcome{0, counts + allIsWell, ""}));
}

TEST_F(VerifyCommand, FindsNothingInANewRepositoryAndMakesNoLock) {
    const HistoryProject fresh;
    const auto before = contentsOf(fresh.folder.path());
    EXPECT_EQ(
        fresh.qrv({"verify"}),
        (Outcome{0, "Commits: 0\nObjects: 0\nPacked objects: 0\nDrawing versions: 0\n" + allIsWell,
                 ""}));
    EXPECT_EQ(contentsOf(fresh.folder.path()), before);
}

TEST_F(VerifyCommand, PrintsJsonWhenAsked) {
    fs::remove(object("1;bolt\n"));
    const std::string document = R"json({
    "commits" : 2,
    "drawingVersions" : 1,
    "notes" : [
    ],
    "objects" : 2,
    "packedObjects" : 0,
    "problems" : [
        "The stored version 'po:DIGEST' is not in the repository (it is 'parts.csv' in commit 1)"
    ],
    "root" : "ROOT"
}
)json";
    const Outcome outcome = project.qrv({"verify", "--json"});
    EXPECT_EQ(outcome.output,
              replaced(replaced(document, "DIGEST", digestOf("1;bolt\n")), "ROOT", root));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.messages, "qrv: Problems: 1\n");
}

TEST_F(VerifyCommand, OnlyNotesWhatHarmsNothing) {
    writeFile(project / ".qrv/objects/.17-1.qrv-tmp", "half");
    writeFile(project / ".qrv/tf/.17-2.qrv-tmp", "half");
    writeFile(project / ".qrv/.17-3.qrv-tmp", "half");
    writeFile(project / ".qrv/objects/readme", "?");
    fs::create_directory(project / ".qrv/tf/folder.tf");
    fs::create_symlink("/dev/zero", project / (".qrv/objects/" + std::string(64, 'a')));
    const auto before = contentsOf(project.folder.path());
    EXPECT_EQ(project.qrv({"verify"}),
              (Outcome{0,
                       counts + allIsWell +
                           "\nNotes:\n"
                           "  3 files, such as '.qrv/.17-3.qrv-tmp', were left by interrupted "
                           "commands (qrv gc "
                           "removes them after a day)\n"
                           "  '.qrv/objects/" +
                           std::string(64, 'a') +
                           "' is nothing that belongs there\n"
                           "  '.qrv/objects/readme' is nothing that belongs there\n"
                           "  '.qrv/tf/folder.tf' is nothing that belongs there\n",
                       ""}));
    EXPECT_EQ(contentsOf(project.folder.path()), before);
    fs::remove(project / ".qrv/.17-3.qrv-tmp");
    fs::remove(project / ".qrv/tf/.17-2.qrv-tmp");
    EXPECT_THAT(
        project.qrv({"verify"}).output,
        testing::HasSubstr("'.qrv/objects/.17-1.qrv-tmp' was left by an interrupted command "
                           "(qrv gc removes it after a day)\n"));
}

TEST_F(VerifyCommand, LeavesAnInterruptedCommandAlone) {
    noteInterrupted("parts.csv", digestOf("1;bolt\n"));
    const auto before = contentsOf(project.folder.path());
    EXPECT_EQ(project.qrv({"verify"}),
              (Outcome{0,
                       counts + allIsWell +
                           "\nNotes:\n  'restore' was interrupted, or is being done now "
                           "by another process\n",
                       ""}));
    EXPECT_EQ(contentsOf(project.folder.path()), before);
}

TEST_F(VerifyCommand, NeedsWhatAnInterruptedCommandNeeds) {
    noteInterrupted("a.txt", std::string(64, '1'));
    const Outcome outcome = project.qrv({"verify"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, testing::HasSubstr(std::string(64, '1') +
                                                   "' is not in the repository (it is 'a.txt' of "
                                                   "an interrupted command)\n"));
}

TEST_F(VerifyCommand, TakesBackWhatAKilledProcessHadBegunToWrite) {
    const fs::path history = project / ".qrv/qrv.db";
    const std::string whole = readFile(history);
    std::string halfWritten;
    std::string journal;
    {
        qrv::Database database(OdString::fromNarrow(history.string()),
                               qrv::Database::Access::readWrite);
        // With next to no memory the pages go to the file before the commit.
        database.execute("PRAGMA cache_size = 1; BEGIN");
        for (int i = 0; i < 50; ++i)
            database.execute("INSERT INTO notes VALUES (hex(randomblob(20)), hex(zeroblob(3000)))");
        halfWritten = readFile(history);
        journal = readFile(history.string() + "-journal");
    }
    ASSERT_NE(halfWritten, whole);
    writeFile(history, halfWritten);
    writeFile(history.string() + "-journal", journal);
    EXPECT_EQ(project.qrv({"verify"}), (Outcome{0, counts + allIsWell, ""}));
    EXPECT_EQ(readFile(history), whole);
}

TEST_F(VerifyCommand, ChangesNothing) {
    flipByte(object("1;bolt\n"), 3);
    fs::remove(object("2;bolts\n"));
    fs::resize_file(store(), fs::file_size(store()) / 2);
    const auto before = contentsOf(project.folder.path());
    EXPECT_EQ(project.qrv({"verify"}).status, 1);
    EXPECT_EQ(contentsOf(project.folder.path()), before);
}

// Symptom: a commit beside a long check ended with "Another process is changing the repository".
// Cause: the check held the lock from its beginning to its end.
TEST_F(VerifyCommand, KeepsNoCommitWaiting) {
    const std::string name(64, 'b');
    writeFile(object("1;bolt\n").parent_path() / name, "");
    fs::resize_file(object("1;bolt\n").parent_path() / name, 2'000'000'000);
    project.write({{"parts.csv", "3;nuts\n"}});
    const Outcome outcome = runShell(
        project.folder.path(),
        "$QRV verify > /dev/null 2>&1 & P=$!; until ls -l /proc/$P/fd 2>&1 | grep -q objects/" +
            name +
            "; do kill -0 $P || exit 9; done; kill -STOP $P; $QRV add --all > /dev/null && timeout "
            "5 $QRV commit -m third; R=$?; kill -CONT $P; kill $P; exit $R",
        project.environment);
    EXPECT_EQ(outcome, (Outcome{0, "Commit 3 on master: third\n", ""}));
}

TEST_F(VerifyCommand, TellsNoDamageWhileOthersCommitAndPack) {
    Outcome changes;
    std::atomic<bool> isDone = false;
    std::thread worker([&] {
        changes = runShell(project.folder.path(),
                           "for i in 1 2 3 4 5 6; do echo $i > parts.csv; echo $i >> plan.dwg; "
                           "$QRV add --all && $QRV commit -m $i && $QRV gc || exit 1; done",
                           project.environment);
        isDone = true;
    });
    int count = 0;
    while (!isDone) {
        const Outcome outcome = project.qrv({"verify"});
        EXPECT_EQ(outcome.status, 0) << outcome;
        ++count;
    }
    worker.join();
    EXPECT_EQ(changes.status, 0) << changes;
    EXPECT_GT(count, 1);
    EXPECT_EQ(project.qrv({"verify"}).status, 0);
}

TEST_F(VerifyCommand, NeedsARepository) {
    const qrv_test::TemporaryFolder folder;
    EXPECT_EQ(runQrv(folder.path(), {"verify"}).status, 1);
}

}  // namespace
