#include <engine/journal/StepsToTree.h>
#include <tests/engine/paths/Paths.h>
#include <tests/engine/worktree/Working.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv::findChanges;
using qrv::stepsToTree;
using qrv::Tree;
using qrv::TreeStep;
using qrv::Unsaved;
using qrv::WorkingTree;
using qrv_test::relative;
using qrv_test::Working;

using Steps = Expected<std::vector<TreeStep>>;

class StepsToTree : public testing::Test {
protected:
    StepsToTree() {
        project.write({{"a.txt", "first a"}, {"d.dwg", "first d"}});
        project.commit("First");
        project.write({{"a.txt", "second a"}, {"d.dwg", "second d"}});
        project.commit("Second");
        workingTree = project.open();
    }

    Steps steps(const Tree& target, Unsaved unsaved = Unsaved::refuse) const {
        return stepsToTree(*workingTree, target, {L"a.txt", L"d.dwg"}, *findChanges(*workingTree),
                           unsaved);
    }
    Tree first() const {
        return workingTree->repository().history().tree(
            workingTree->repository().history().commitByNumber(1)->hash);
    }
    const Tree& second() const { return workingTree->repository().headFiles(); }

    const Working project;
    std::unique_ptr<WorkingTree> workingTree;
};

TEST_F(StepsToTree, AreNoneWhereTheFilesAreAsWanted) {
    EXPECT_EQ(*steps(second()), std::vector<TreeStep>());
    project.write({{"a.txt", "first a"}, {"d.dwg", "first d"}});
    EXPECT_EQ(*steps(first()), std::vector<TreeStep>());
}

TEST_F(StepsToTree, LeadFromAnyStoredVersion) {
    const std::vector<TreeStep> back = {
        {relative(L"a.txt"), urlIn(first(), L"a.txt"), urlIn(second(), L"a.txt"), 8},
        {relative(L"d.dwg"), urlIn(first(), L"d.dwg"), urlIn(second(), L"d.dwg"), 8}};
    project.write({{"a.txt", "first a"}, {"d.dwg", "first d"}});
    EXPECT_EQ(*steps(second()), back);
}

TEST_F(StepsToTree, RemoveWhatIsNotWanted) {
    EXPECT_EQ(*steps(Tree()),
              (std::vector<TreeStep>{{relative(L"a.txt"), urlIn(second(), L"a.txt"), L"", 0},
                                     {relative(L"d.dwg"), urlIn(second(), L"d.dwg"), L"", 0}}));
}

TEST_F(StepsToTree, BringBackWhatIsGone) {
    fs::remove(project / "a.txt");
    EXPECT_EQ(*steps(second()),
              (std::vector<TreeStep>{{relative(L"a.txt"), L"", urlIn(second(), L"a.txt"), 8}}));
}

TEST_F(StepsToTree, AreRefusedForContentsThatAreKeptNowhere) {
    project.write({{"a.txt", "unsaved"}, {"d.dwg", "unsaved, too"}});
    EXPECT_EQ(steps(second()).error().message,
              OdString(L"These files have changes that are kept nowhere (--force replaces them):"
                       L"\n  a.txt\n  d.dwg"));
}

TEST_F(StepsToTree, StoreSuchContentsWhenAsked) {
    project.write({{"a.txt", "unsaved"}, {"d.dwg", "unsaved, too"}});
    const Steps found = steps(second(), Unsaved::store);
    ASSERT_TRUE(found);
    ASSERT_EQ(found->size(), 2);
    for (const TreeStep& step : *found) {
        const OdString copy = project.folder.text("copy");
        ASSERT_TRUE(workingTree->repository()
                        .storages()
                        .ofUrl(step.before)
                        .exportTo(workingTree->root(), step.before, copy));
        EXPECT_EQ(qrv_test::readFile(project / "copy"),
                  qrv_test::readFile(project / step.path.bytes()));
    }
    // From now on they may be replaced.
    EXPECT_TRUE(steps(second()));
}

TEST_F(StepsToTree, OnlyLookWhenNothingIsToBeDone) {
    project.write({{"a.txt", "unsaved"}});
    const auto before = qrv_test::contentsOf(project / ".qrv/packs");
    const Steps found = steps(second(), Unsaved::leave);
    EXPECT_EQ(*found,
              (std::vector<TreeStep>{{relative(L"a.txt"), L"", urlIn(second(), L"a.txt"), 8}}));
    EXPECT_EQ(qrv_test::contentsOf(project / ".qrv/packs"), before);
}

TEST_F(StepsToTree, KnowADrawingThatOnlyTheWantedTreeHas) {
    workingTree.reset();
    fs::remove(project / "d.dwg");
    project.commit("Third");
    project.write({{"d.dwg", "second d"}});
    workingTree = project.open();
    const Tree wanted = first();
    const OdString store = urlIn(wanted, L"d.dwg").left(36);
    const Steps found =
        stepsToTree(*workingTree, wanted, {L"d.dwg"}, *findChanges(*workingTree), Unsaved::refuse);
    ASSERT_TRUE(found) << found.error().message.toNarrow();
    ASSERT_EQ(found->size(), 1);
    EXPECT_EQ(found->front().before.left(36), store);
}

}  // namespace
