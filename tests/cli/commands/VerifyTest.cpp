#include <common/repository/RootPath.h>
#include <engine/base/Digest.h>
#include <engine/database/Database.h>
#include <engine/history/History.h>
#include <engine/history/JournalEntry.h>
#include <tests/cli/commands/HistoryProject.h>
#include <tests/engine/paths/Paths.h>

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <thread>

namespace {

namespace fs = std::filesystem;
using qrv_test::contentsOf;
using qrv_test::HistoryProject;
using qrv_test::Outcome;
using qrv_test::readFile;
using qrv_test::relative;
using qrv_test::runQrv;
using qrv_test::runShell;
using qrv_test::writeFile;

/// Bytes that no compression makes shorter, so that a store holds them nearly as they are.
std::string noise(std::size_t size) {
    std::string bytes;
    for (int block = 0; bytes.size() < size; ++block)
        bytes += qrv::Digest::of(std::to_string(block));
    return bytes;
}

/// Where the longest frame of the file has its middle.
std::size_t middleOfFrame(const fs::path& frames) {
    qrv::Database database(OdString::fromNarrow(frames.string()), qrv::Database::Access::readOnly);
    qrv::Statement longest =
        database.prepare("SELECT bytes FROM pieces ORDER BY length(bytes) DESC");
    longest.step();
    const std::string_view frame = longest.bytes(0);
    return readFile(frames).find(frame.substr(frame.size() / 2, 16));
}

void flipByte(const fs::path& file, std::size_t position) {
    std::string bytes = readFile(file);
    bytes.at(position) = static_cast<char>(bytes.at(position) ^ 1);
    fs::remove(file);
    writeFile(file, bytes);
}

std::string replaced(std::string text, const std::string& word, const std::string& other) {
    return text.replace(text.find(word), word.size(), other);
}

/// Two commits of a drawing and a parts list.
class VerifyCommand : public testing::Test {
protected:
    VerifyCommand() {
        project.write({{"plan.dwg", noise(40000)}, {"parts.csv", "1;bolt\n"}});
        project.commit("first");
        project.write({{"parts.csv", "2;bolts\n"}});
        project.commit("second");
    }

    static std::string digestOf(const std::string& contents) { return qrv::Digest::of(contents); }
    fs::path object(const std::string& contents) const {
        return project / (".qrv/objects/" + digestOf(contents));
    }
    fs::path store() const { return fs::directory_iterator(project / ".qrv/tf")->path(); }

    /// Leaves what a command leaves that was killed before it wrote the file.
    void noteInterrupted(const std::string& path, const std::string& digest) const {
        const auto rootPath = common::RootPath::get(project.folder.text(), false).value();
        qrv::History history = qrv::History::open(rootPath, qrv::Database::Access::readWrite);
        qrv::JournalEntry entry;
        entry.title = L"restore";
        entry.steps.push_back({relative(OdString::fromNarrow(path)), OdString(),
                               OdString::fromNarrow("po:" + digest), 7});
        noteEntry(history, entry);
    }

    /// What is printed for one problem.
    static Outcome problem(const std::string& counts, const std::string& text) {
        return {1, counts + "\nProblems:\n  " + text + "\n", "qrv: Problems: 1\n"};
    }

    const HistoryProject project;
    const std::string root = fs::canonical(project.folder.path());
    const std::string counts = "Commits: 2\nObjects: 3\nPacked objects: 0\nDrawing versions: 1\n";
    const std::string allIsWell = "Everything that was kept is there and whole\n";
};

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

/// With a baseline that a look kept.
class VerifyBaseline : public VerifyCommand {
protected:
    VerifyBaseline() {
        for (const auto& [path, contents] : contentsOf(project.folder.path())) {
            if (path.find(".qrv/") != 0 || path == ".qrv/properties/ignore")
                makeOlder(path, std::chrono::hours(1));
        }
        // The first one reads the files again.
        project.run({"status"});
        project.run({"status"});
    }
    void makeOlder(const std::string& path, std::chrono::seconds by) const {
        fs::last_write_time(project / path, fs::last_write_time(project / path) - by);
    }

    const fs::path baseline = project / ".qrv/baseline";
    const std::string damage = "'.qrv/baseline' is damaged (qrv status makes it anew)";
};

TEST_F(VerifyBaseline, FindsNothingInAWholeOne) {
    ASSERT_TRUE(fs::exists(baseline));
    EXPECT_EQ(project.qrv({"verify"}), (Outcome{0, counts + allIsWell, ""}));
}

TEST_F(VerifyBaseline, FindsAFlippedBit) {
    flipByte(baseline, 100);
    EXPECT_EQ(project.qrv({"verify"}), problem(counts, damage));
    project.run({"status"});
    EXPECT_EQ(project.qrv({"verify"}), (Outcome{0, counts + allIsWell, ""}));
}

TEST_F(VerifyBaseline, FindsOneThatSaysSomethingElseThanStateAndHistory) {
    std::string bytes = qrv_test::readFile(baseline);
    const std::size_t name = bytes.find("master");
    ASSERT_NE(name, std::string::npos);
    bytes.replace(name, 6, "matser");
    const std::size_t body = 15 + 64;
    bytes.replace(15, 64, digestOf(bytes.substr(body)));
    qrv_test::writeFile(baseline, bytes);
    EXPECT_EQ(project.qrv({"verify"}), problem(counts, damage));
}

TEST_F(VerifyBaseline, MindsNoOldOne) {
    project.write({{"parts.csv", "3;bolts\n"}});
    project.commit("third");
    EXPECT_EQ(project.qrv({"verify"}).status, 0);
}

TEST_F(VerifyCommand, FindsAFlippedBitOfAnObject) {
    flipByte(object("1;bolt\n"), 3);
    EXPECT_EQ(project.qrv({"verify"}),
              problem(counts, "The stored version 'po:" + digestOf("1;bolt\n") +
                                  "' is damaged: its contents have another digest (it is "
                                  "'parts.csv' in commit 1)"));
}

TEST_F(VerifyCommand, FindsAFlippedBitOfAPackedObject) {
    project.write({{"parts.csv", noise(40000)}});
    project.commit("third");
    project.write({{"parts.csv", "3;nuts\n"}});
    project.commit("fourth");
    project.run({"gc"});
    const std::string digest = digestOf(noise(40000));
    flipByte(project / ".qrv/objects.pack", middleOfFrame(project / ".qrv/objects.pack"));
    const Outcome outcome = project.qrv({"verify"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, testing::HasSubstr("Packed objects: 3\n"));
    EXPECT_THAT(outcome.output, testing::HasSubstr("The version " + digest + " in '" + root +
                                                   "/.qrv/objects.pack' is damaged: "));
    EXPECT_THAT(outcome.output, testing::HasSubstr("(it is 'parts.csv' in commit 3)"));
}

TEST_F(VerifyCommand, FindsAFlippedBitOfADrawing) {
    flipByte(store(), middleOfFrame(store()));
    const Outcome outcome = project.qrv({"verify"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, testing::StartsWith(counts + "\nProblems:\n  The version " +
                                                    digestOf(noise(40000)) + " in '" +
                                                    store().string() + "' is damaged: "));
    EXPECT_EQ(outcome.messages, "qrv: Problems: 1\n");
}

TEST_F(VerifyCommand, FindsATruncatedDrawingStore) {
    fs::resize_file(store(), fs::file_size(store()) / 2);
    const Outcome outcome = project.qrv({"verify"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output,
                testing::HasSubstr("\n  The database '" + store().string() + "' cannot be used: "));
    EXPECT_THAT(outcome.output, testing::HasSubstr("(it is 'plan.dwg' in commit 1)"));
}

TEST_F(VerifyCommand, FindsAnEmptiedAndAMissingDrawingStore) {
    const std::string url = "tf:" + store().stem().string() + "#" + digestOf(noise(40000));
    const std::string missing =
        "The stored version '" + url + "' is not in the repository (it is 'plan.dwg' in commit 1)";
    const std::string none = "Commits: 2\nObjects: 3\nPacked objects: 0\nDrawing versions: 0\n";
    fs::resize_file(store(), 0);
    EXPECT_EQ(project.qrv({"verify"}), problem(none, missing));
    fs::remove(store());
    EXPECT_EQ(project.qrv({"verify"}), problem(none, missing));
}

TEST_F(VerifyCommand, FindsACutHistory) {
    fs::resize_file(project / ".qrv/qrv.db", 5000);
    const Outcome outcome = project.qrv({"verify"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output,
                testing::HasSubstr("Problems:\n  The database '" + root + "/.qrv/qrv.db' "));
}

TEST_F(VerifyCommand, FindsAMissingHistory) {
    const std::string none = "Commits: 0\nObjects: 3\nPacked objects: 0\nDrawing versions: 1\n";
    const std::string missing =
        "\nProblems:\n  The history '" + root +
        "/.qrv/qrv.db' is missing or empty, although '.qrv/references' shows";
    fs::resize_file(project / ".qrv/qrv.db", 0);
    EXPECT_THAT(project.qrv({"verify"}).output, testing::StartsWith(none + missing));
    fs::remove(project / ".qrv/qrv.db");
    EXPECT_THAT(project.qrv({"verify"}).output, testing::StartsWith(none + missing));
    EXPECT_EQ(project.qrv({"verify"}).status, 1);
}

TEST_F(VerifyCommand, FindsACommitThatSomebodyChanged) {
    {
        qrv::Database history(OdString::fromNarrow(root + "/.qrv/qrv.db"),
                              qrv::Database::Access::readWrite);
        history.execute("UPDATE commits SET author = 'eve' WHERE number = 2");
    }
    EXPECT_EQ(project.qrv({"verify"}),
              problem(counts, "The history '" + root +
                                  "/.qrv/qrv.db' is damaged: commit 2 is not the one that its "
                                  "hash names"));
}

TEST_F(VerifyCommand, FindsAStateThatCannotBeRead) {
    writeFile(project / ".qrv/qrv.state", R"({"head": {"reference": 3}})");
    const Outcome outcome = project.qrv({"verify"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, testing::StartsWith(counts + "\nProblems:\n"));
    writeFile(project / ".qrv/qrv.state", R"({"head": {"reference": "ma)");
    EXPECT_EQ(project.qrv({"verify"}),
              problem(counts,
                      "The state file '" + root + "/.qrv/qrv.state' ends in the middle of a text"));
    fs::remove(project / ".qrv/qrv.state");
    EXPECT_EQ(project.qrv({"verify"}),
              problem(counts, "No state file found at " + root + "/.qrv/qrv.state"));
}

TEST_F(VerifyCommand, FindsAStateOfAnotherBranch) {
    writeFile(project / ".qrv/qrv.state", R"({"head": {"reference": "side"}})");
    EXPECT_EQ(project.qrv({"verify"}),
              problem(counts,
                      "The state is damaged: it names the branch 'side', but the files of HEAD are "
                      "not those of that branch"));
}

TEST_F(VerifyCommand, FindsPathsInTheStateThatCannotBe) {
    writeFile(project / ".qrv/qrv.state", R"({
        "head": {"reference": "master"},
        "staged_files": [
            {"path": "a.txt", "file_change": "added"},
            {"path": "a.txt", "file_change": "removed"},
            {"path": "../b.txt", "file_change": "added"}
        ],
        "conflicts": [
            {"path": "c.txt", "remote_url": "po:1", "local_type": "modified", "remote_type": "modified"}
        ]
    })");
    const Outcome outcome = project.qrv({"verify"});
    EXPECT_EQ(outcome.messages, "qrv: Problems: 3\n");
    EXPECT_THAT(outcome.output,
                testing::HasSubstr("The state is damaged: 'a.txt' is staged twice"));
    EXPECT_THAT(outcome.output, testing::HasSubstr("The state is damaged: '../b.txt' "));
    EXPECT_THAT(outcome.output,
                testing::HasSubstr("The state is damaged: 'po:1' does not name a stored version"));
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
