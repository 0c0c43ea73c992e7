#pragma once

#include <common/base/Expected.h>
#include <engine/history/JournalEntry.h>
#include <engine/journal/Application.h>
#include <engine/worktree/WorkingTree.h>

namespace qrv {

/// What follows when the working files are as planned: HEAD's files and reference in one
/// transaction, then the state; then the entry is forgotten. On a failure it stays
/// noted, for the next command.
Expected<void> finish(WorkingTree& workingTree, const JournalEntry& entry,
                      const AppliedStamps& stamps);

/// What follows when the working files are as before the merge that `entry` takes back.
Expected<void> completeRollBack(WorkingTree& workingTree, const JournalEntry& entry,
                                const AppliedStamps& stamps);

}  // namespace qrv
