#pragma once

#include <common/state/Cache.h>
#include <common/worktree/File.h>
#include <common/worktree/RepoFileExplorer.h>
#include <engine/worktree/WorkingChanges.h>
#include <platform/kernel/OdString.h>

#include <vector>

namespace qrv {

/// Everything that could be staged: modified, then added, then removed files.
std::vector<common::StagedFile> candidatesOf(const common::RepoFileExplorer& explorer);

/// The files and, for each that is half of a renaming, the other half, each once, ordered by path.
std::vector<common::StagedFile> withRenameHalves(const std::vector<common::StagedFile>& files,
                                                 const WorkingChanges& changes);

/// Stages the files, in place of what was staged under their paths, and notes their renamings.
void stage(const std::vector<common::StagedFile>& files, const WorkingChanges& changes,
           common::Cache& cache);

/// Takes the files that were chosen (see `isChosen`) off the stage and gives them.
std::vector<common::StagedFile> unstage(const std::vector<OdString>& chosen, common::Cache& cache);

/// The staged files that still differ from HEAD, each with its present change, ordered by path. One
/// that cannot be looked at has the change with which it was staged.
std::vector<common::StagedFile> stagedChanges(const common::State& state,
                                              const WorkingChanges& changes);

}  // namespace qrv
