#pragma once

#include <engine/history/JournalEntry.h>
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

    /// The entry of `qrv switch BRANCH`.
    static qrv::JournalEntry planOfSwitch(qrv::WorkingTree& workingTree, const wchar_t* branch) {
        qrv::JournalEntry entry;
        entry.title = OdString(L"switch ") + branch;
        entry.branch = branch;
        entry.commit =
            *workingTree.repository().history().reference(branch, common::RefType::Branch);
        entry.steps = stepsFromHead(workingTree.repository().history(), entry.commit);
        return entry;
    }

    const Working project;
};

}  // namespace qrv_test
