#pragma once

#include <common/base/Expected.h>
#include <common/state/ConflictData.h>
#include <engine/base/Caller.h>
#include <engine/base/Export.h>
#include <engine/history/CommitEntry.h>
#include <platform/kernel/OdString.h>

#include <optional>
#include <string>
#include <vector>

namespace qrv {

/// What is to be merged into the current branch.
struct MergeRequest {
    /// As a person calls a commit: "HEAD", a branch or tag, a number or the beginning of a hash.
    OdString commit;
    /// Of a commit that the merge may make.
    OdString author;
    /// The same; without it, one that names both branches.
    std::optional<OdString> message;
};

/// What became of a merge.
struct Merged {
    /// How it ended.
    enum class Kind {
        upToDate,     ///< HEAD has all of it already
        fastForward,  ///< HEAD had nothing of its own: the branch now stands for the other commit
        committed,    ///< a commit with two parents was made
        conflicts,    ///< files are to be resolved; then a commit ends the merge
    };

    /// How this one ended.
    Kind kind = Kind::upToDate;
    /// The working files that were brought to the other side's version, ordered by path.
    std::vector<OdString> files;
    /// What is open now.
    std::vector<common::ConflictData> conflicts;
    /// The commit that HEAD now stands for, when that is another one.
    std::optional<CommitEntry> commit;
};

/// Merges a commit into the current branch. Each file that only the other side changed is taken
/// over, unless another program saves it meanwhile; of one that both changed the local bytes stay,
/// and a conflict is recorded.
///
/// Fails, with nothing changed, for a commit that is not found, while another merge is going on or
/// files are staged, and when a file that the merge touches has changes that are not committed, is
/// open in another program, or something else lies in its place.
QRV_ENGINE_EXPORT Expected<Merged> merge(const std::string& folder, const MergeRequest& request,
                                         Caller& caller);

/// Ends a merge with open conflicts, or one not yet committed, and brings every file that it
/// touched back to HEAD. Files that were edited since are an error, unless `force`: then what they
/// hold is stored first, and the caller is told under which name. Fails, too, when no merge is
/// going on; nothing is changed then.
QRV_ENGINE_EXPORT Expected<void> abortMerge(const std::string& folder, bool force, Caller& caller);

}  // namespace qrv
