#pragma once

#include <cli/history/Plan.h>
#include <cli/worktree/WorkingChanges.h>
#include <cli/worktree/Workspace.h>
#include <common/base/Expected.h>

#include <vector>

namespace qrv_cli {

/// The steps that lead from the tree `before` to the tree `after`, ordered by path.
std::vector<PlannedFile> stepsBetween(const Tree& before, const Tree& after);

/// Fails, with a list of them, for files that would take the place of something that is in no
/// commit: a link, a file that the ignore rules hide, or a file where a folder is needed. `steps`
/// are ordered by path.
Expected<void> checkRoom(const Workspace& workspace, const std::vector<PlannedFile>& steps,
                         const WorkingChanges& changes);

/// Fails, with a list of them, when the steps touch files that are not as in HEAD, and as
/// `checkRoom` does.
Expected<void> checkUnharmed(const Workspace& workspace, const std::vector<PlannedFile>& steps,
                             const WorkingChanges& changes);

/// Notes the plan, does it, and forgets it: brings the working files to their new versions, then
/// HEAD's files and reference in one transaction, then the state with its index. Files that are
/// not in the plan are left alone.
///
/// On a failure what was done is taken back, as far as possible, and the plan is forgotten; what
/// cannot be taken back stays noted for the next command.
Expected<void> carryOut(Workspace& workspace, const Plan& plan);

/// Does the steps that bring the files of a merge with conflicts back to HEAD, and ends the merge:
/// the stage, the conflicts and the note of the other commit go. Interrupted, it is finished by the
/// next command; on a failure everything is as before, as far as possible.
Expected<void> takeBackMerge(Workspace& workspace, const std::vector<PlannedFile>& steps);

/// Finishes or takes back what an interrupted command left, and tells so. A working file that is
/// neither as before nor as planned was changed by somebody meanwhile: it is left alone, and named.
/// Without the lock nothing is done but telling.
Expected<void> recover(Workspace& workspace);

}  // namespace qrv_cli
