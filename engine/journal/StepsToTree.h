#pragma once

#include <common/base/Expected.h>
#include <engine/history/History.h>
#include <engine/history/JournalEntry.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>
#include <platform/kernel/OdString.h>

#include <vector>

namespace qrv {

/// What is done with working files whose contents are kept nowhere and that are to be replaced.
enum class Unsaved {
    refuse,  ///< an error lists them
    store,   ///< the contents are stored first, and a note tells their URL
    leave,   ///< nothing, as the steps are only to be looked at
};

/// The steps that bring the working files `paths`, ordered and each once, to their versions in
/// `target`; a path that is not in it goes. Files that are as wanted take no step. A file whose
/// present contents are a stored version is safe to replace, whatever commit that belongs to.
///
/// Fails when a file cannot be read or stored, with `Unsaved::refuse` for files with unsaved
/// changes, and when a file lies where another one needs a folder; nothing was changed then.
Expected<std::vector<TreeStep>> stepsToTree(WorkingTree& workingTree, const Tree& target,
                                            const std::vector<OdString>& paths,
                                            const WorkingChanges& changes, Unsaved unsaved);

}  // namespace qrv
