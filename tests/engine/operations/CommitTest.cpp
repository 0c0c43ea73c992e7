#include <engine/operations/CommitInternal.h>
#include <tests/engine/base/RecordingCaller.h>
#include <tests/engine/worktree/Working.h>
#include <tests/support/Files.h>

#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
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
    std::optional<sys::FileStamp> stampOf(const char* file) {
        return workingTree->repository().history().headFile(OdString(file))->stamp;
    }
    void makeOlder(const char* file) const {
        std::filesystem::last_write_time(
            project / file, std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    }

    qrv_test::Working project;
    qrv_test::RecordingCaller caller;
    std::unique_ptr<WorkingTree> workingTree;
};

TEST_F(Commit, NotesOfEachFileWhatItWasWhenItWasStored) {
    makeOlder("a.txt");
    const qrv::WorkingChanges changes = qrv::findChanges(*workingTree).value();

    EXPECT_EQ(commit(changes)->number, 2);

    EXPECT_THAT(state().stagedFiles, testing::IsEmpty());
    EXPECT_THAT(state().index, testing::IsEmpty());
    EXPECT_EQ(stampOf("a.txt"), *workingTree->folder().stamp("a.txt"));
    // It may change again without another time.
    EXPECT_EQ(stampOf("b.txt"), std::nullopt);
}

TEST_F(Commit, BelievesNoTimeOfAStagedFileThatIsNotStored) {
    makeOlder("a.txt");
    project.write({{"b.txt", "as it was"}});
    makeOlder("b.txt");
    const qrv::WorkingChanges changes = qrv::findChanges(*workingTree).value();
    project.write({{"b.txt", "as it WAS"}});

    EXPECT_EQ(commit(changes)->number, 2);

    EXPECT_NE(stampOf("b.txt"), *workingTree->folder().stamp("b.txt"));
    EXPECT_EQ(stampOf("a.txt"), *workingTree->folder().stamp("a.txt"));
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
