#pragma once

#include <common/base/Expected.h>
#include <common/state/ConflictData.h>
#include <common/worktree/File.h>
#include <engine/base/Caller.h>
#include <engine/base/Export.h>
#include <engine/history/CommitEntry.h>
#include <engine/worktree/Unseen.h>
#include <platform/kernel/OdString.h>

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace qrv {

/// How a working tree stands to HEAD. All lists are ordered by path.
struct Status {
    /// The folder of the repository.
    OdString root;
    /// The current one.
    OdString branch;
    /// Of HEAD; nothing before the first commit.
    std::optional<CommitEntry> commit;
    /// The commit that is being merged, or empty.
    OdString merging;
    /// Regular files that are there and versioned, or could be.
    std::size_t fileCount = 0;
    /// Staged files that differ from HEAD: one that was put back as it was is not staged any more.
    std::vector<common::StagedFile> staged;
    /// What differs and is neither staged nor in conflict.
    std::vector<common::StagedFile> unstaged;
    /// From the new paths of files to those in HEAD.
    std::map<OdString, OdString> renames;
    /// Of a merge that is going on.
    std::vector<common::ConflictData> conflicts;
    /// What could not be looked at.
    std::vector<Unseen> unseen;
};

/// Compares the working files with HEAD. Never waits for another process and changes no file of
/// the project; what was found by reading is kept for the next look, if nobody else is at work.
/// What cannot be looked at is part of the answer. Fails when the repository cannot be opened or
/// read.
QRV_ENGINE_EXPORT Expected<Status> status(const std::string& folder, Caller& caller);

}  // namespace qrv
