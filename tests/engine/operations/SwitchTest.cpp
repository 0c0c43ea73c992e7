#include <engine/operations/Switch.h>
#include <tests/engine/operations/TwoSides.h>

namespace {

using qrv::Switched;
using qrv_test::failureOf;
using testing::HasSubstr;

class SwitchBranch : public qrv_test::TwoSides {
protected:
    Expected<Switched> to(const wchar_t* branch, bool create = false) {
        return switchBranch(root(), {branch, create, std::nullopt}, caller);
    }
};

TEST_F(SwitchBranch, BringsTheFilesOfTheOtherBranch) {
    const Expected<Switched> switched = to(L"side");
    EXPECT_EQ(switched->branch, OdString(L"side"));
    EXPECT_EQ(switched->fileCount, 2U);
    EXPECT_EQ(contents("a.txt"), "a");
    EXPECT_EQ(contents("b.txt"), "b of the side");
}

TEST_F(SwitchBranch, MakesABranchWithoutTouchingAFile) {
    project.write({{"a.txt", "in work"}});
    const Expected<Switched> switched = to(L"new", true);
    EXPECT_EQ(switched->fileCount, 0U);
    EXPECT_EQ(contents("a.txt"), "in work");
    EXPECT_THAT(project.run({"branch"}), HasSubstr("* new"));
}

TEST_F(SwitchBranch, LeavesFilesThatAreNotCommitted) {
    project.write({{"a.txt", "in work"}});
    EXPECT_THAT(failureOf(to(L"side")), HasSubstr("changes that are not committed"));
    EXPECT_EQ(contents("a.txt"), "in work");
    EXPECT_EQ(contents("b.txt"), "b");
}

TEST_F(SwitchBranch, NamesTheBranchThatMayHaveBeenMeant) {
    EXPECT_THAT(failureOf(to(L"sid")), HasSubstr("did you mean 'side'?"));
    EXPECT_EQ(failureOf(to(L"side", true)), "There is a branch 'side' already");
}

}  // namespace
