#pragma once

#include <engine/journal/OpenTree.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>
#include <tests/cli/commands/HistoryProject.h>
#include <tests/engine/base/RecordingCaller.h>

#include <memory>
#include <string>

namespace qrv_test {

/// A repository in which the parts of the program are called one by one.
struct Working : HistoryProject {
    /// Opens it for a change. Until it ends no other process can change the repository.
    std::unique_ptr<qrv::WorkingTree> open() const {
        return std::move(*qrv::openTree(folder.path(), qrv::Repository::Use::change, anyCaller()));
    }
    OdString url(qrv::WorkingTree& workingTree, const char* path) const {
        return urlIn(workingTree.repository().headFiles(), OdString(path));
    }
};

/// "path change, ..." in the order of the list.
inline std::string shown(const qrv::WorkingChanges& changes) {
    std::string text;
    for (const common::StatusRef& change : changes.files.changes)
        text +=
            change.path().toNarrow() + " " + common::toString(change.status())->toNarrow() + ", ";
    return text;
}

}  // namespace qrv_test
