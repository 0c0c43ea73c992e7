#pragma once

#include <engine/history/Plan.h>
#include <engine/journal/Perform.h>
#include <tests/engine/worktree/Working.h>

#include <gtest/gtest.h>

#include <filesystem>

namespace qrv_test {

/// "old" and "new" are branches with one changed file, one that only "old" and one that only "new"
/// has; "old" is the current one.
class TwoBranches : public testing::Test {
protected:
    TwoBranches() {
        project.write({{"a.txt", "old a"}, {"gone/b.txt", "old b"}});
        project.commit("Old");
        project.run({"switch", "-c", "old"});
        project.run({"switch", "-c", "new"});
        project.write({{"a.txt", "new a"}, {"fresh/c.dwg", "new c"}});
        std::filesystem::remove_all(project / "gone");
        project.commit("New");
        project.run({"switch", "old"});
    }

    /// The plan of `qrv switch BRANCH`.
    static qrv::Plan planOfSwitch(qrv::WorkingTree& workingTree, const wchar_t* branch) {
        qrv::Plan plan;
        plan.title = OdString(L"switch ") + branch;
        plan.branch = branch;
        plan.commit =
            *workingTree.repository().history().reference(branch, common::RefType::Branch);
        plan.files = qrv::stepsBetween(workingTree.repository().headFiles(),
                                       workingTree.repository().history().tree(plan.commit));
        return plan;
    }

    const Working project;
};

}  // namespace qrv_test
