#pragma once

#include <common/base/Expected.h>
#include <engine/history/JournalEntry.h>
#include <engine/journal/Preconditions.h>
#include <engine/worktree/WorkingTree.h>
#include <platform/kernel/OdString.h>

#include <map>
#include <vector>

namespace qrv {

/// What is done with a file that holds something unexpected when its step comes.
enum class Unexpected {
    fail,   ///< the steps end there
    leave,  ///< it is told, and left as it is
};

/// What working files were when they were as planned. Of others nothing is known.
using AppliedStamps = std::map<OdString, sys::FileStamp>;

/// Does steps of the entry, each at most once: first the removals, so that a file can take the
/// place of a folder and the other way round, then the rest. Then all of it is on the disk. What is
/// replaced or removed is in the storage.
Expected<AppliedStamps> applySteps(WorkingTree& workingTree, const JournalEntry& entry,
                                   const std::vector<const TreeStep*>& steps,
                                   const Sightings& sightings, Unexpected unexpected);

/// All steps of the entry, from the beginning, where an unexpected file is a failure.
Expected<AppliedStamps> applyAll(WorkingTree& workingTree, const JournalEntry& entry,
                                 const Sightings& sightings);

/// Tells that a file was left as it is.
void tellLeft(const OdString& path, Caller& caller);

}  // namespace qrv
