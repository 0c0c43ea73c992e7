#include <engine/history/JournalEntry.h>
#include <engine/operations/Recover.h>
#include <engine/worktree/WorkingTree.h>
#include <tests/engine/operations/TwoSides.h>

namespace {

using qrv::InterruptedOperation;
using qrv::Recover;
using qrv::WorkingTree;
using testing::ElementsAre;

/// A switch to "side" was noted, and nothing of it done.
class RecoverInterrupted : public qrv_test::TwoSides {
protected:
    RecoverInterrupted() {
        const auto workingTree =
            std::move(*WorkingTree::open(root(), qrv::Repository::Use::change, caller));
        qrv::Repository& repository = workingTree->repository();
        qrv::JournalEntry entry;
        entry.title = L"switch side";
        entry.branch = L"side";
        entry.commit = *repository.history().reference(L"side", common::RefType::Branch);
        entry.steps = stepsFromHead(repository.history(), entry.commit);
        noteEntry(repository.history(), entry);
    }

    std::optional<InterruptedOperation> found(Recover what) {
        return *recover(root(), what, caller);
    }
};

TEST_F(RecoverInterrupted, OnlyTellsWhatItWouldDo) {
    for (int time = 0; time < 2; ++time) {
        const auto operation = found(Recover::look);
        ASSERT_TRUE(operation);
        EXPECT_EQ(operation->title, OdString(L"switch side"));
        EXPECT_TRUE(operation->isFinished);
        EXPECT_THAT(operation->files, ElementsAre(OdString(L"a.txt"), OdString(L"b.txt")));
    }
    EXPECT_EQ(contents("b.txt"), "b");
}

TEST_F(RecoverInterrupted, FinishesIt) {
    EXPECT_TRUE(found(Recover::settle));
    EXPECT_EQ(contents("b.txt"), "b of the side");
    EXPECT_FALSE(found(Recover::settle));
}

TEST_F(RecoverInterrupted, ForgetsItAndLeavesTheFiles) {
    EXPECT_TRUE(found(Recover::forget));
    EXPECT_EQ(contents("b.txt"), "b");
    EXPECT_FALSE(found(Recover::look));
}

}  // namespace
