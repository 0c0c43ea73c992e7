#pragma once

#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/Workspace.h>
#include <tests/cli/commands/HistoryProject.h>
#include <tests/engine/base/RecordingCaller.h>

#include <memory>
#include <string>

namespace qrv_test {

/// A repository in which the parts of the program are called one by one.
struct Working : HistoryProject {
    /// Opens it for a change. Until it ends no other process can change the repository.
    std::unique_ptr<qrv::Workspace> open() const {
        return std::move(
            *qrv::Workspace::open(folder.path(), qrv::Workspace::Use::change, anyCaller()));
    }
    OdString url(qrv::Workspace& workspace, const char* path) const {
        return workspace.headFiles().at(OdString(path)).url;
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
