#pragma once

#include <common/base/Expected.h>
#include <engine/history/JournalEntry.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>
#include <sys/FileStamp.h>

#include <map>
#include <vector>

namespace qrv {

// What is asked before the first working file is touched. `steps` are ordered by path.

/// Fails, with a list of them, for files that would take the place of something that is in no
/// commit: a link, a file that the ignore rules hide, or a file where a folder is needed. `changes`
/// tell at least of the files of the steps.
Expected<void> checkNothingInTheWay(const WorkingTree& workingTree,
                                    const std::vector<TreeStep>& steps,
                                    const WorkingChanges& changes);

/// Fails, with a list of them, when the steps touch files that are not as in HEAD, and as
/// `checkNothingInTheWay` does.
Expected<void> checkNoLocalChanges(const WorkingTree& workingTree,
                                   const std::vector<TreeStep>& steps,
                                   const WorkingChanges& changes);

/// Fails, with a list of them, when the steps would give two files names that a disk which ignores
/// letter case takes for one: the second could not be there beside the first.
Expected<void> checkNames(const WorkingTree& workingTree, const std::vector<TreeStep>& steps);

/// Fails, with a list of them, when the steps change files that another program has open: a lock
/// file lies beside a drawing, or the program writes to the file or has locked it.
Expected<void> checkNotInUse(WorkingTree& workingTree, const std::vector<TreeStep>& steps);

/// Working files by path, as they were seen to have the contents that a step expects.
using Sightings = std::map<OdString, sys::FileStamp>;

/// Looks at the files that the steps change once more. Fails, with a list of them, for those that
/// do not have the expected contents: another program has saved them since `changes` were found.
Expected<Sightings> lookAgain(const WorkingTree& workingTree, const std::vector<TreeStep>& steps,
                              const WorkingChanges& changes);

/// All that comes before the first file is touched: `checkNames` where it matters, `checkNotInUse`
/// and `lookAgain`.
Expected<Sightings> checkPreconditions(WorkingTree& workingTree, const std::vector<TreeStep>& steps,
                                       const WorkingChanges& changes);

}  // namespace qrv
