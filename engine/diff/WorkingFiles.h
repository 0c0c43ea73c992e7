#pragma once

#include <common/base/Expected.h>
#include <engine/diff/Difference.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>

#include <vector>

namespace qrv {

/// How the working files, those included that are not staged, differ from HEAD, file by file and
/// ordered by path. Fails when one that has changed cannot be read. The paths were not checked:
/// some may be such that no commit can have them.
Expected<std::vector<Difference>> readWorkingFiles(WorkingTree& workingTree,
                                                   const WorkingChanges& changes);

}  // namespace qrv
