#pragma once

#include <common/base/Expected.h>
#include <engine/history/Plan.h>
#include <engine/journal/Application.h>
#include <engine/worktree/WorkingTree.h>

namespace qrv {

/// What follows when the working files are as planned: HEAD's files and reference in one
/// transaction, then the state with its index; then the plan is forgotten. On a failure it stays
/// noted, for the next command.
Expected<void> finish(WorkingTree& workingTree, const Plan& plan, const PlannedTimes& times);

/// What follows when the working files are as before the merge that `plan` takes back.
Expected<void> finishTakingBack(WorkingTree& workingTree, const Plan& plan,
                                const PlannedTimes& times);

}  // namespace qrv
