#include <engine/operations/CommitInternal.h>
#include <engine/worktree/Ticks.h>
#include <tests/engine/base/RecordingCaller.h>
#include <tests/engine/worktree/Working.h>
#include <tests/support/Files.h>

#include <gmock/gmock.h>

#include <memory>
#include <string>

namespace {

using common::FileChange;
using qrv::CommitEntry;
using qrv::WorkingTree;
using testing::ElementsAre;

/// Two files, both changed and staged since the first commit.
class Commit : public testing::Test {
protected:
    Commit() {
        project.write({{"a.txt", "first"}, {"b.txt", "as it was"}});
        project.commit("First");
        project.write({{"a.txt", "the second"}, {"b.txt", "as it is"}});
        project.run({"add", "."});
        workingTree =
            std::move(*qrv::openTree(project.folder.path(), qrv::Repository::Use::change, caller));
    }

    Expected<CommitEntry> commit(const qrv::WorkingChanges& changes) {
        caller.sizes.clear();
        return qrv::commitStaged(*workingTree, changes, {L"ada@office", L"Second"});
    }
    const common::State& state() { return workingTree->repository().state(); }
    std::int64_t ticksOf(const char* file) const {
        return qrv::toTicks(workingTree->folder().status(file)->modifiedNs);
    }

    qrv_test::Working project;
    qrv_test::RecordingCaller caller;
    std::unique_ptr<WorkingTree> workingTree;
};

TEST_F(Commit, NotesInTheIndexWhenEachFileWasStored) {
    const qrv::WorkingChanges changes = qrv::findChanges(*workingTree).value();

    EXPECT_EQ(commit(changes)->number, 2);

    EXPECT_THAT(state().stagedFiles, testing::IsEmpty());
    for (const char* const file : {"a.txt", "b.txt"})
        EXPECT_EQ(state().index.at(OdString(file)),
                  (common::IndexData{.lastChecked = ticksOf(file), .modified = false}));
}

TEST_F(Commit, BelievesNoTimeOfAStagedFileThatIsNotStored) {
    project.write({{"b.txt", "as it was"}});
    const qrv::WorkingChanges changes = qrv::findChanges(*workingTree).value();

    EXPECT_EQ(commit(changes)->number, 2);

    EXPECT_FALSE(state().index.contains(L"b.txt"));
    EXPECT_TRUE(state().index.contains(L"a.txt"));
}

// Symptom: the progress of a commit ran past the size of its files.
// Cause: for a staged file that was in HEAD as it is, the size of the file before it was added once
// more.
TEST_F(Commit, CountsEachFileByItsOwnSize) {
    const qrv::WorkingChanges changes = qrv::findChanges(*workingTree).value();
    project.write({{"b.txt", "as it was"}});

    const CommitEntry made = commit(changes).value();

    EXPECT_THAT(caller.sizes, ElementsAre(10, 9));
    EXPECT_EQ(workingTree->repository().history().deltas(made.hash).size(), 1U);
}

}  // namespace
