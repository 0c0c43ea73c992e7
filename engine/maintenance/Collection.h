#pragma once

#include <common/base/Expected.h>
#include <engine/maintenance/Collected.h>
#include <engine/repository/Repository.h>

namespace qrv {

enum class CollectionMode {
    look,    ///< only counts; `sizeAfter` is `sizeBefore`, as nobody knows how small the pack gets
    change,  ///< needs a repository that holds the lock
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
Expected<Collected> collectGarbage(Repository& repository, CollectionMode mode);

}  // namespace qrv
