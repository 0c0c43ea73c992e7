#pragma once

#include <engine/operations/Merge.h>
#include <engine/worktree/WorkingTree.h>

namespace qrv {

// The operations of Merge.h in an open working tree. They need the lock, and may throw
// `DatabaseError`.

Expected<Merged> merge(WorkingTree& workingTree, const MergeRequest& request);
Expected<void> abortMerge(WorkingTree& workingTree, bool force);

/// Fails when a merge is going on, with a text that says how to end it.
Expected<void> checkNoMerge(Repository& repository);

}  // namespace qrv
