#pragma once

#include <engine/operations/Add.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>

#include <cstdint>

namespace qrv {

/// Fills in all of `added` but its staged files, which are there and not yet in the state.
void findStagingFacts(Added& added, std::int64_t largeFileBytes, const WorkingChanges& changes,
                      const WorkingTree& workingTree);

}  // namespace qrv
