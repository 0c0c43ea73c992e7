#pragma once

#include <common/base/Expected.h>
#include <engine/history/JournalEntry.h>
#include <engine/worktree/WorkingTree.h>

namespace qrv {

/// Clears the folders of the entry of what a process left that ended in the middle of it: new files
/// that have no name yet go; what was moved aside goes when the storage has it, and gets its name
/// back, or one beside it, when a program had saved it. Only the process that holds the lock may
/// call this. Fails, with the rest left as it is, when something cannot be looked at or moved.
Expected<void> settleLeftovers(WorkingTree& workingTree, const JournalEntry& entry);

}  // namespace qrv
