#include <engine/journal/Preconditions.h>
#include <engine/worktree/FoldedName.h>
#include <tests/engine/tree/Trees.h>
#include <tests/engine/worktree/Working.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv::findChanges;
using qrv::TreeStep;
using qrv_test::relative;
using qrv_test::Working;

class Preconditions : public testing::Test {
protected:
    Preconditions() {
        project.write({{"plan.dwg", "plan"}, {"list.csv", "3"}});
        project.commit("First");
    }
    TreeStep replacing(const char* path) const {
        const auto workingTree = project.open();
        return {relative(path), project.url(*workingTree, path), qrv_test::url('1'), 1};
    }
    static std::string answer(const Expected<void>& checked) {
        return checked ? "fine" : checked.error().message.toNarrow();
    }
    std::string names(const std::vector<TreeStep>& steps) const {
        return answer(checkNames(*project.open(), steps));
    }
    std::string inUse(const std::vector<TreeStep>& steps) const {
        return answer(checkNotInUse(*project.open(), steps));
    }

    const Working project;
};

TEST_F(Preconditions, NameFilesThatAreOpenInAnotherProgram) {
    const std::vector<TreeStep> steps = {replacing("list.csv"), replacing("plan.dwg")};
    EXPECT_EQ(inUse(steps), "fine");
    project.write({{"plan.dwl2", "ada"}});
    std::ofstream writer(project / "list.csv", std::ios::app);
    EXPECT_EQ(inUse(steps),
              "These files are open in another program, which has to close them first:\n"
              "  list.csv\n"
              "  plan.dwg\n"
              "These say so (one that a program left when it crashed can be deleted):\n"
              "  plan.dwl2");
    writer.close();
    fs::remove(project / "plan.dwl2");
    EXPECT_EQ(inUse(steps), "fine");
}

TEST_F(Preconditions, SeeWhatWasSavedSinceTheChangesWereFound) {
    const std::vector<TreeStep> steps = {replacing("list.csv"), replacing("plan.dwg")};
    const auto workingTree = project.open();
    const qrv::WorkingChanges changes = *findChanges(*workingTree);
    EXPECT_TRUE(lookAgain(*workingTree, steps, changes));
    project.write({{"plan.dwg", "PLAN"}});
    fs::remove(project / "list.csv");
    EXPECT_EQ(lookAgain(*workingTree, steps, changes).error().message,
              OdString(L"Another program has just changed these files; try again:\n"
                       L"  list.csv\n"
                       L"  plan.dwg"));
}

TEST_F(Preconditions, FindNamesThatWouldBeOne) {
    const TreeStep capitals = {relative(L"PLAN.dwg"), L"", qrv_test::url('1'), 1};
    const TreeStep gone = {relative(L"plan.dwg"), qrv_test::url('2'), L"", 0};
    const std::string both =
        "This disk takes these names for one, so that the second file would "
        "take the place of the first:\n  ";
    EXPECT_EQ(names({capitals}), both + "plan.dwg, PLAN.dwg");
    EXPECT_EQ(names({capitals, gone}), "fine");
    EXPECT_EQ(names({replacing("plan.dwg")}), "fine");
    EXPECT_EQ(names({{relative(L"\u00E4.txt"), L"", qrv_test::url('1'), 1},
                     {relative(L"A\u0308.txt"), L"", qrv_test::url('2'), 1}}),
              both + "\u00E4.txt, A\u0308.txt");
}

TEST_F(Preconditions, KnowADiskThatTellsLetterCaseApart) {
    const sys::Folder root = *sys::Folder::open(project.folder.path());
    EXPECT_FALSE(qrv::ignoresLetterCase(root));
    fs::create_directory(project / ".QRV");
    EXPECT_FALSE(qrv::ignoresLetterCase(root));
}

// As on a disk that ignores letter case, where one file is found under both names.
TEST_F(Preconditions, GiveRoomToAFileWhoseNameChangesItsLettersOnly) {
    const auto workingTree = project.open();
    const qrv::WorkingChanges changes = *findChanges(*workingTree);
    fs::create_hard_link(project / "plan.dwg", project / "PLAN.dwg");
    const std::vector<TreeStep> steps = {{relative(L"PLAN.dwg"), L"", qrv_test::url('1'), 1},
                                         {relative(L"plan.dwg"), qrv_test::url('1'), L"", 0}};
    EXPECT_TRUE(checkNothingInTheWay(*workingTree, steps, changes));
    EXPECT_FALSE(checkNothingInTheWay(*workingTree, {steps[0]}, changes));
}

}  // namespace
