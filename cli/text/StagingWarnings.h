#pragma once

#include <common/worktree/File.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>

#include <vector>

namespace qrv::cli {

/// Tells, as notes on standard error, what a person should know before these files are committed: a
/// file or a whole commit that is very large (the limits are in the program's configuration), names
/// that differ from another only in letter case or Unicode form, names that Windows cannot hold,
/// and drawings that somebody has open now.
void warnBeforeStaging(const std::vector<common::StagedFile>& files, const WorkingChanges& changes,
                       const WorkingTree& workingTree);

}  // namespace qrv::cli
