#pragma once

#include <common/base/Expected.h>
#include <engine/worktree/WorkingTree.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <vector>

namespace qrv {

/// Files or stored versions, and how many bytes they hold.
struct Amount {
    std::int64_t count = 0;
    std::int64_t sizeBytes = 0;

    friend bool operator==(const Amount&, const Amount&) = default;
};

/// What was collected, or would be.
struct Collected {
    /// Objects that moved into the pack; their contents' bytes.
    Amount packed;
    /// Objects that were forgotten.
    Amount droppedObjects;
    /// Drawing versions that were forgotten; their contents' bytes.
    Amount droppedDrawingVersions;
    /// Unfinished files of killed processes.
    Amount leftovers;
    /// What objects, pack and drawing stores take on the disk.
    std::int64_t sizeBefore = 0;
    std::int64_t sizeAfter = 0;
    /// What could not be collected because it is damaged or cannot be changed; it stays as it is.
    std::vector<OdString> problems;
};

enum class CollectionMode {
    look,    ///< only counts; `sizeAfter` is `sizeBefore`, as nobody knows how small the pack gets
    change,  ///< needs a workingTree that holds the lock
};

/// Makes the repository smaller without losing anything that a commit names.
///
/// Objects that neither HEAD nor the tip of a branch needs go into the pack, each as a difference
/// from an earlier version of the same file where that halves it; their plain files are removed
/// after the pack is on the disk and each object was read back from it. Objects that no commit
/// names are forgotten two weeks after they were stored: a command may have stored them for a
/// commit that is still to be made, or to save what it replaced. Drawing versions and packed
/// objects have no time of their own; there it is two weeks since anything was last written to the
/// file that holds them. Before the first commit nothing is forgotten. Unfinished files go after a
/// day.
///
/// Whenever the process is killed, nothing is lost, and the next run goes on.
///
/// Fails, with nothing changed, when the history is damaged: then nobody knows what is needed. May
/// throw `DatabaseError`.
Expected<Collected> collectGarbage(WorkingTree& workingTree, CollectionMode mode);

}  // namespace qrv
