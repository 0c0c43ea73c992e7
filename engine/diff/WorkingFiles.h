#pragma once

#include <common/base/Expected.h>
#include <engine/tree/TreeFile.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>
#include <platform/kernel/OdString.h>

#include <map>

namespace qrv {

/// The files of the working tree by their paths. These were not checked: some may be such that no
/// commit can have them.
using WorkingFiles = std::map<OdString, TreeFile>;

/// The working files, those included that are not staged. Fails when one that has changed since
/// HEAD cannot be read.
Expected<WorkingFiles> readWorkingFiles(WorkingTree& workingTree, const WorkingChanges& changes);

}  // namespace qrv
