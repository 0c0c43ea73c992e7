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
/// Everything that somebody names and that does not lie in the packs of an earlier collection comes
/// into new packs, in which like lies beside like and is kept as a difference from another version
/// or from similar contents; where it lay before is removed after the new packs are on the disk and
/// were read back. What no commit names is forgotten two weeks after it was stored: a command may
/// have stored it for a commit that is still to be made, or to save what it replaced. Only plain
/// objects have a time of their own; elsewhere it is two weeks since anything was last kept in the
/// same file. Before the first commit nothing is packed or forgotten. Unfinished files go after a
/// day.
///
/// Whenever the process is killed, nothing is lost, and the next run goes on.
///
/// Fails, with nothing changed, when the history is damaged: then nobody knows what is needed. May
/// throw `DatabaseError`.
Expected<Collected> collectGarbage(Repository& repository, CollectionMode mode);

}  // namespace qrv
