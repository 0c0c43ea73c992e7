#pragma once

#include <common/base/Expected.h>
#include <engine/history/JournalEntry.h>
#include <engine/worktree/WorkingTree.h>

namespace qrv {

/// Finishes or takes back what an interrupted command left, and tells so. A working file that is
/// neither as before nor as planned was changed by somebody meanwhile: it is left alone, and named.
/// Needs the lock.
///
/// Fails, and the entry stays noted, when anything cannot be looked at, written or removed, and
/// when a file of the entry is open in another program: nobody can tell then what was done already,
/// and whoever forgot the entry would take the other branch's files for a person's work.
Expected<void> recover(WorkingTree& workingTree);

/// Takes back what was done of the entry before it failed, and forgets it; gives the failure. What
/// cannot be taken back stays noted, for the next command, which is told.
ErrorMessage rollBackAfter(WorkingTree& workingTree, const JournalEntry& entry,
                           const ErrorMessage& failure);

}  // namespace qrv
