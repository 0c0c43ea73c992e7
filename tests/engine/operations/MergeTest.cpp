#include <engine/operations/Merge.h>
#include <tests/engine/operations/TwoSides.h>

namespace {

using qrv::Merged;
using qrv_test::failureOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Merge : public qrv_test::TwoSides {
protected:
    Expected<Merged> merge(const wchar_t* commit = L"side") {
        return qrv::merge(root(), {commit, L"ada", std::nullopt}, caller);
    }
    /// "side" and "master" each have an own version of b.txt.
    void makeBothChangeB() const {
        project.write({{"b.txt", "b of master"}});
        project.commit("B on master");
    }
};

TEST_F(Merge, TakesWhatOnlyTheOtherSideChangedAndCommits) {
    const Expected<Merged> merged = merge();
    EXPECT_EQ(merged->kind, Merged::Kind::committed);
    EXPECT_THAT(merged->files, ElementsAre(OdString(L"b.txt")));
    EXPECT_THAT(merged->conflicts, IsEmpty());
    EXPECT_EQ(merged->commit->parents.size(), 2U);
    EXPECT_EQ(merged->commit->author, OdString(L"ada"));
    EXPECT_EQ(merged->commit->message, OdString(L"Merge 'side' into 'master'"));
    EXPECT_EQ(contents("a.txt"), "a of master");
    EXPECT_EQ(contents("b.txt"), "b of the side");
}

TEST_F(Merge, KeepsTheLocalBytesOfAFileThatBothChanged) {
    makeBothChangeB();
    const Expected<Merged> merged = merge();
    EXPECT_EQ(merged->kind, Merged::Kind::conflicts);
    EXPECT_FALSE(merged->commit);
    ASSERT_EQ(merged->conflicts.size(), 1U);
    EXPECT_EQ(merged->conflicts.front().path, OdString(L"b.txt"));
    EXPECT_EQ(contents("b.txt"), "b of master");
}

TEST_F(Merge, GoesForwardWhereTheBranchHasNothingOfItsOwn) {
    project.run({"switch", "--create", "behind", "1"});
    const Expected<Merged> merged = merge(L"side");
    EXPECT_EQ(merged->kind, Merged::Kind::fastForward);
    EXPECT_EQ(merged->commit->message, OdString(L"On the side"));
    EXPECT_EQ(contents("b.txt"), "b of the side");
}

TEST_F(Merge, DoesNothingWithACommitThatIsMergedAlready) {
    ASSERT_TRUE(merge());
    EXPECT_EQ(merge()->kind, Merged::Kind::upToDate);
    EXPECT_EQ(merge(L"1")->kind, Merged::Kind::upToDate);
}

TEST_F(Merge, LeavesEverythingWhenAFileThatItTouchesWasEdited) {
    project.write({{"b.txt", "in work"}});
    EXPECT_THAT(failureOf(merge()), HasSubstr("changes that are not committed"));
    EXPECT_EQ(contents("b.txt"), "in work");
    EXPECT_THAT(project.run({"log"}), Not(HasSubstr("Merge")));
}

TEST_F(Merge, WaitsForTheStageToBeCommitted) {
    project.write({{"c.txt", "c"}});
    project.run({"add", "c.txt"});
    EXPECT_THAT(failureOf(merge()), HasSubstr("Commit the staged files first"));
}

TEST_F(Merge, IsTakenBackFileByFile) {
    makeBothChangeB();
    project.run({"switch", "side"});
    project.write({{"c.txt", "c"}});
    project.commit("C on the side");
    project.run({"switch", "master"});
    ASSERT_EQ(merge()->kind, Merged::Kind::conflicts);
    ASSERT_EQ(contents("c.txt"), "c");
    EXPECT_TRUE(abortMerge(root(), false, caller));
    EXPECT_FALSE(std::filesystem::exists(project / "c.txt"));
    EXPECT_EQ(contents("b.txt"), "b of master");
    EXPECT_EQ(failureOf(abortMerge(root(), false, caller)), "No merge is going on");
}

}  // namespace
