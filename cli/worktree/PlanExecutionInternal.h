#pragma once

#include <cli/history/Plan.h>
#include <cli/worktree/Workspace.h>
#include <common/base/Expected.h>
#include <platform/kernel/OdString.h>

namespace qrv_cli {

/// Removes the file, and the folders that it leaves empty. One that is not there is no error.
Expected<void> removeWorkingFile(const Workspace& workspace, const OdString& path);

/// What follows when the working files are as planned: HEAD's files and reference in one
/// transaction, then the state with its index; then the plan is forgotten. On a failure it stays
/// noted, for the next command.
Expected<void> finish(Workspace& workspace, const Plan& plan);

/// Takes back what was done of the plan before it failed, and forgets it; gives the failure. What
/// cannot be taken back stays noted, for the next command, which is told.
Expected<void> takeBackAfter(Workspace& workspace, const Plan& plan, const ErrorMessage& failure);

/// Hands all contents and names of the working files over to the disk. Without it a cut of the
/// power could take back what was done by a plan that is forgotten.
Expected<void> flushWorkingFiles(const Workspace& workspace);

}  // namespace qrv_cli
