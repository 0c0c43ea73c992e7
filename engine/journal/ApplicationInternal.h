#pragma once

#include <common/base/Expected.h>
#include <engine/history/Plan.h>
#include <engine/journal/Preconditions.h>
#include <engine/worktree/WorkingTree.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <map>
#include <vector>

namespace qrv {

/// What comes before the first file is touched: `checkNames` where it matters, `checkNotInUse` and
/// `lookAgain`.
Expected<Sightings> lookBeforeBeginning(WorkingTree& workingTree,
                                        const std::vector<PlannedFile>& steps,
                                        const WorkingChanges& changes);

/// What is done with a file that holds something unexpected when its step comes.
enum class Unexpected {
    fail,   ///< the steps end there
    leave,  ///< it is told, and left as it is
};

/// The times of modification, in ticks, of working files that are as planned. Of others nothing is
/// known.
using PlannedTimes = std::map<OdString, std::int64_t>;

/// Does steps of the plan, each at most once: first the removals, so that a file can take the place
/// of a folder and the other way round, then the rest. Then all of it is on the disk. What is
/// replaced or removed is in the storage.
Expected<PlannedTimes> applySteps(WorkingTree& workingTree, const Plan& plan,
                                  const std::vector<const PlannedFile*>& steps,
                                  const Sightings& sightings, Unexpected unexpected);

/// All steps of the plan, from the beginning, where an unexpected file is a failure.
Expected<PlannedTimes> applyPlan(WorkingTree& workingTree, const Plan& plan,
                                 const Sightings& sightings);

/// What follows when the working files are as planned: HEAD's files and reference in one
/// transaction, then the state with its index; then the plan is forgotten. On a failure it stays
/// noted, for the next command.
Expected<void> finish(WorkingTree& workingTree, const Plan& plan, const PlannedTimes& times);

/// What follows when the working files are as before the merge that `plan` takes back.
Expected<void> finishTakingBack(WorkingTree& workingTree, const Plan& plan,
                                const PlannedTimes& times);

/// Takes back what was done of the plan before it failed, and forgets it; gives the failure. What
/// cannot be taken back stays noted, for the next command, which is told.
ErrorMessage takeBackAfter(WorkingTree& workingTree, const Plan& plan, const ErrorMessage& failure);

/// The way back.
Plan reversed(Plan plan);

/// The digest in a storage URL; empty for an empty one.
OdString digestOfUrl(const OdString& url);

}  // namespace qrv
