#include <engine/history/JournalEntry.h>
#include <engine/journal/Perform.h>
#include <engine/journal/Preconditions.h>
#include <tests/engine/journal/TwoBranches.h>
#include <tests/engine/tree/Trees.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv::findChanges;
using qrv::JournalEntry;
using qrv::noteEntry;
using qrv::TreeStep;
using qrv::WorkingTree;
using qrv_test::contentsOf;
using qrv_test::Outcome;
using qrv_test::readFile;

class Perform : public qrv_test::TwoBranches {
protected:
    static JournalEntry planOfSwitch(WorkingTree& workingTree) {
        return TwoBranches::planOfSwitch(workingTree, L"new");
    }
    /// As a command leaves it that was killed after it had noted its entry.
    void interrupt() const {
        const std::unique_ptr<WorkingTree> workingTree = project.open();
        noteEntry(workingTree->repository().history(), planOfSwitch(*workingTree));
    }
    void interruptMerge() const {
        const std::unique_ptr<WorkingTree> workingTree = project.open();
        JournalEntry entry = planOfSwitch(*workingTree);
        entry.title = L"merge of 'new'";
        entry.branch = L"";
        entry.commit = L"";
        entry.recovery = JournalEntry::Recovery::rollBack;
        noteEntry(workingTree->repository().history(), entry);
    }
    bool isThere(const std::string& path) const { return fs::exists(project / path); }

    const qrv_test::TemporaryFolder outside;
    const std::string begun = "qrv: Note: 'switch new' was interrupted; it is being finished\n";
    const std::string ended = "qrv: Note: 'switch new' was interrupted and is now finished\n";
    const std::string finished = begun + ended;
    const std::string onNew = "Branch 'new', commit 2: New\n";
};

TEST_F(Perform, ChangesFilesHeadAndState) {
    const std::unique_ptr<WorkingTree> workingTree = project.open();
    ASSERT_TRUE(perform(*workingTree, planOfSwitch(*workingTree), *findChanges(*workingTree)));
    EXPECT_EQ(readFile(project / "a.txt"), "new a");
    EXPECT_EQ(readFile(project / "fresh/c.dwg"), "new c");
    EXPECT_FALSE(isThere("gone"));
    EXPECT_EQ(workingTree->repository().branch(), OdString(L"new"));
    EXPECT_FALSE(notedEntry(workingTree->repository().history()));
    EXPECT_TRUE(findChanges(*workingTree)->isEmpty());
}

TEST_F(Perform, TakesEverythingBackWhenAVersionIsMissing) {
    const std::unique_ptr<WorkingTree> workingTree = project.open();
    JournalEntry entry = planOfSwitch(*workingTree);
    entry.steps.push_back({qrv_test::relative(L"z.txt"), L"", qrv_test::url('f'), 1});
    const Expected<void> done = perform(*workingTree, entry, *findChanges(*workingTree));
    ASSERT_FALSE(done);
    EXPECT_EQ(readFile(project / "a.txt"), "old a");
    EXPECT_EQ(readFile(project / "gone/b.txt"), "old b");
    EXPECT_FALSE(isThere("fresh"));
    EXPECT_EQ(workingTree->repository().branch(), OdString(L"old"));
    EXPECT_FALSE(notedEntry(workingTree->repository().history()));
    EXPECT_TRUE(findChanges(*workingTree)->isEmpty());
}

TEST_F(Perform, IsFinishedByTheNextCommandThatChangesSomething) {
    interrupt();
    EXPECT_EQ(project.qrv({"tag", "v1"}).messages, finished);
    EXPECT_EQ(project.qrv({"status"}), (Outcome{0, onNew + "Nothing has changed; files: 3\n", ""}));
    EXPECT_EQ(readFile(project / "a.txt"), "new a");
    EXPECT_FALSE(isThere("gone"));
}

// Symptom: a look into a folder that somebody had handed over wrote that person's files over ours.
// Cause: whatever command came next carried out the entry that it found in the repository.
TEST_F(Perform, IsOnlyToldByALook) {
    interrupt();
    const auto before = contentsOf(project.folder.path());
    const std::string told =
        "qrv: Note: 'switch new' was interrupted; qrv recover finishes it, and so does the next "
        "command that changes something\n";
    const std::string leftOut =
        "qrv: Note: files left out because they belong to the repository: 1\n";
    for (const std::vector<std::string>& look :
         std::vector<std::vector<std::string>>{{"log"},
                                               {"show"},
                                               {"diff"},
                                               {"branch"},
                                               {"tag"},
                                               {"gc", "--dry-run"},
                                               {"recover", "--dry-run"},
                                               {"restore", ".", "--to", outside / "copy"}}) {
        const Outcome outcome = project.qrv(look);
        EXPECT_EQ(outcome.status, 0) << look.front() << outcome;
        EXPECT_EQ(outcome.messages, look.front() == "restore" ? told + leftOut : told)
            << look.front();
    }
    EXPECT_EQ(contentsOf(project.folder.path()), before);
    EXPECT_EQ(project.qrv({"status"}),
              (Outcome{0, "Branch 'old', commit 1: Old\nNothing has changed; files: 3\n", told}));
    EXPECT_EQ(readFile(project / "a.txt"), "old a");
}

TEST_F(Perform, HalfDoneShowsTheFilesAsTheyAreToALook) {
    interrupt();
    project.write({{"fresh/c.dwg", "new c"}});
    fs::remove_all(project / "gone");
    EXPECT_EQ(project.qrv({"status"}).output,
              "Branch 'old', commit 1: Old\n"
              "\nChanged, not staged (qrv add PATH):\n"
              "  added     fresh/c.dwg\n"
              "  removed   gone/b.txt\n");
    EXPECT_EQ(project.run({"recover"}), "'switch new' is finished; files: 3\n");
    EXPECT_EQ(project.qrv({"status"}), (Outcome{0, onNew + "Nothing has changed; files: 3\n", ""}));
}

TEST_F(Perform, LeavesAloneWhatAPersonChangedMeanwhile) {
    interrupt();
    project.write({{"a.txt", "saved after the power cut"}});
    EXPECT_EQ(project.qrv({"recover"}).messages,
              begun +
                  "qrv: Note: 'a.txt' was changed by somebody meanwhile and is left as it is\n" +
                  ended);
    EXPECT_EQ(project.run({"status"}), onNew +
                                           "\nChanged, not staged (qrv add PATH):\n"
                                           "  modified  a.txt\n");
    EXPECT_EQ(readFile(project / "a.txt"), "saved after the power cut");
}

TEST_F(Perform, RemovesWhatTheDeadProcessWasAboutToPublish) {
    interrupt();
    project.write({{".123-0.qrv-tmp", "half"}, {"fresh/.123-1.qrv-tmp", "half"}});
    project.run({"recover"});
    EXPECT_EQ(project.run({"status"}), onNew + "Nothing has changed; files: 3\n");
    EXPECT_FALSE(isThere(".123-0.qrv-tmp"));
    EXPECT_FALSE(isThere("fresh/.123-1.qrv-tmp"));
}

TEST_F(Perform, OfAMergeIsTakenBackByTheNextCommand) {
    interruptMerge();
    // Done so far: a file for a folder, and one new version.
    fs::remove_all(project / "gone");
    project.write({{"gone", ""}, {"a.txt", "new a"}});
    fs::remove(project / "gone");
    EXPECT_EQ(project.qrv({"recover"}),
              (Outcome{0, "'merge of 'new'' is taken back; files: 3\n",
                       "qrv: Note: 'merge of 'new'' was interrupted; it is being taken back\n"
                       "qrv: Note: 'merge of 'new'' was interrupted and is taken back\n"}));
    EXPECT_EQ(project.run({"status"}),
              "Branch 'old', commit 1: Old\nNothing has changed; files: 3\n");
    EXPECT_EQ(readFile(project / "a.txt"), "old a");
    EXPECT_EQ(readFile(project / "gone/b.txt"), "old b");
}

TEST_F(Perform, IsOnlyToldWhileAnotherProcessIsAtWork) {
    interrupt();
    const auto held = sys::Lock::tryTake(*sys::Folder::open(project / "."), ".qrv/lock");
    ASSERT_TRUE(held);
    const Outcome outcome = project.qrv({"status"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.messages,
              "qrv: Note: 'switch new' was interrupted, or is being done now by "
              "another process\n");
    EXPECT_EQ(readFile(project / "a.txt"), "old a");
}

TEST_F(Perform, FindsRoomOnlyWhereNothingUnknownLies) {
    const std::unique_ptr<WorkingTree> workingTree = project.open();
    const std::vector<TreeStep> planned = {
        {qrv_test::relative(L"fresh/c.dwg"), L"", qrv_test::url('1'), 1}};
    const auto room = [&] {
        const Expected<void> checked =
            checkNothingInTheWay(*workingTree, planned, *findChanges(*workingTree));
        return checked ? "room" : checked.error().message.toNarrow();
    };
    const std::string none =
        "These files have no room, because something that is in no commit has "
        "their name or that of a folder above them:\n  fresh/c.dwg";
    EXPECT_EQ(room(), "room");
    project.write({{"fresh/other.txt", ""}});
    EXPECT_EQ(room(), "room");
    fs::create_symlink("other.txt", project / "fresh/c.dwg");
    EXPECT_EQ(room(), none);
    fs::remove_all(project / "fresh");
    project.write({{"fresh", ""}});
    EXPECT_EQ(room(), none);
    fs::remove(project / "fresh");
    fs::create_directory_symlink("gone", project / "fresh");
    EXPECT_EQ(room(), none);
    fs::remove(project / "fresh");
    project.write({{"fresh/c.dwg/inside.txt", ""}});
    EXPECT_EQ(room(), none);
}

}  // namespace
