#pragma once

#include <common/base/Expected.h>
#include <engine/history/Plan.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>

#include <vector>

namespace qrv {

/// Notes the plan, does it, and forgets it: brings the working files to their new versions, then
/// HEAD's files and reference in one transaction, then the state with its index. Files that are
/// not in the plan are left alone. `changes` are those that the plan was made of.
///
/// Fails with nothing touched when a file of the plan is open in another program, or was saved
/// since the changes were found. A file that is saved after that is found at the moment of its own
/// step, at the latest: it is left as it is, and that is a failure like any other. What was done is
/// taken back then, as far as possible, and the plan is forgotten; what cannot be taken back stays
/// noted for the next command.
Expected<void> carryOut(WorkingTree& workingTree, const Plan& plan, const WorkingChanges& changes);

/// The same for a plan that has no files.
Expected<void> carryOutWithoutFiles(WorkingTree& workingTree, const Plan& plan);

/// Does the steps that bring the files of a merge with conflicts back to HEAD, and ends the merge:
/// the stage, the conflicts and the note of the other commit go. Interrupted, it is finished by the
/// next command; on a failure everything is as before, as far as possible.
Expected<void> takeBackMerge(WorkingTree& workingTree, const std::vector<PlannedFile>& steps,
                             const WorkingChanges& changes);

}  // namespace qrv
