#pragma once

#include <common/base/Expected.h>
#include <engine/operations/Commit.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>

namespace qrv {

/// What `commit` does, in an open working tree, which holds the lock. The order is: objects and
/// drawing revisions, then the history in one transaction, then the state. What is interrupted
/// after the history leaves a stage whose files are no longer changed, which the next command sees.
/// May throw `DatabaseError`.
Expected<CommitEntry> commitStaged(WorkingTree& workingTree, const WorkingChanges& changes,
                                   const CommitRequest& text);

}  // namespace qrv
