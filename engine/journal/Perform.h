#pragma once

#include <common/base/Expected.h>
#include <engine/history/JournalEntry.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>

#include <vector>

namespace qrv {

/// Notes the entry, does it, and forgets it: brings the working files to their new versions, then
/// HEAD's files and reference in one transaction, then the state with its index. Files that are
/// not in the entry are left alone. `changes` are those that the entry was made of.
///
/// Fails with nothing touched when a file of the entry is open in another program, or was saved
/// since the changes were found. A file that is saved after that is found at the moment of its own
/// step, at the latest: it is left as it is, and that is a failure like any other. What was done is
/// taken back then, as far as possible, and the entry is forgotten; what cannot be taken back stays
/// noted for the next command.
Expected<void> perform(WorkingTree& workingTree, const JournalEntry& entry,
                       const WorkingChanges& changes);

/// The same for an entry that has no files.
Expected<void> performWithoutFiles(WorkingTree& workingTree, const JournalEntry& entry);

/// Does the steps that bring the files of a merge with conflicts back to HEAD, and ends the merge:
/// the stage, the conflicts and the note of the other commit go. Interrupted, it is finished by the
/// next command; on a failure everything is as before, as far as possible.
Expected<void> rollBackMerge(WorkingTree& workingTree, const std::vector<TreeStep>& steps,
                             const WorkingChanges& changes);

}  // namespace qrv
