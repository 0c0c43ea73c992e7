#pragma once

#include <engine/operations/Add.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>

#include <cstdint>
#include <vector>

namespace qrv {

/// Whether the name of a new file, or of a folder above it, is one with another name that lies
/// there, of whatever kind, for a system that tells neither letter case nor accents apart.
bool haveNamesAlike(const std::vector<common::StagedFile>& files, const WorkingTree& workingTree);

/// Fills in all of `added` but its staged files, which are there and not yet in the state.
/// `changes` are those of the whole tree wherever `haveNamesAlike` is true of them.
void findStagingFacts(Added& added, std::int64_t largeFileBytes, const WorkingChanges& changes,
                      const WorkingTree& workingTree);

}  // namespace qrv
