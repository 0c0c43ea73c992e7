#pragma once

#include <common/base/Expected.h>
#include <engine/worktree/WorkingTree.h>

namespace qrv {

/// Tells that an interrupted command left something to do, and who does it. Does nothing of it: a
/// look changes no file, least of all because a repository says so. Never waits for the lock.
void tellInterruption(WorkingTree& workingTree);

/// Does what an interrupted command left to do, after it was checked (see NotedPlanCheck.h), and
/// tells so. Fails when it cannot be trusted or cannot be done; it stays noted then. Needs the
/// lock.
Expected<void> settleInterruption(WorkingTree& workingTree);

/// Leaves the working files as they are, and forgets what an interrupted command had left to do.
/// The files of HEAD are those of the current branch afterwards. Needs the lock.
void forgetInterruption(WorkingTree& workingTree);

}  // namespace qrv
