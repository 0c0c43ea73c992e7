#pragma once

#include <common/base/Expected.h>
#include <engine/operations/CommitInternal.h>
#include <engine/tree/ThreeWay.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>

#include <optional>

namespace qrv {

/// How a merge ended.
struct MergeOutcome {
    enum class Kind {
        upToDate,   ///< HEAD has all of it already
        forward,    ///< HEAD had nothing of its own: the branch went forward to the other commit
        committed,  ///< a commit with two parents was made
        conflicts,  ///< files are to be resolved; then a commit ends the merge
    };

    Kind kind = Kind::upToDate;
    ThreeWayResult files;
    /// The commit that HEAD now stands for.
    std::optional<CommitEntry> commit;
};

/// Merges the commit `hash` into the current branch. Each file that only the other side changed is
/// taken over, unless another program saves it meanwhile; of one that both changed the local bytes
/// stay, and a conflict is recorded in the state.
///
/// Fails, with nothing changed, while another merge is going on or files are staged, and when a
/// file that the merge touches has changes that are not committed or is open in another program.
Expected<MergeOutcome> merge(WorkingTree& workingTree, const OdString& hash, const OdString& name,
                             const CommitText& text);

/// Ends a merge with open conflicts, or one not yet committed, and brings every file that it
/// touched back to HEAD. Files that were edited since are an error, unless `force`: then what they
/// hold is stored first, and named.
Expected<void> abortMerge(WorkingTree& workingTree, bool force);

/// Fails when a merge is going on, with a text that says how to end it.
Expected<void> checkNoMerge(WorkingTree& workingTree);

}  // namespace qrv
