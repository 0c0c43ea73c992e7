#pragma once

#include <common/base/Expected.h>
#include <common/worktree/File.h>
#include <engine/history/History.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>

#include <optional>
#include <vector>

namespace qrv {

/// What a person says of a commit.
struct CommitText {
    OdString author;
    OdString message;
};

/// Stores the staged files and makes a commit of them on the current branch; while a merge is going
/// on, the commit that was merged becomes its second parent.
///
/// The order is: objects and drawing revisions, then the history in one transaction, then the
/// state. Whatever fails, nothing is committed, and files that were stored are only not needed;
/// what is interrupted later leaves a stage whose files are no longer changed, which the next
/// command sees.
///
/// Ctrl-C and the like stop it as long as nothing is in the history, and then nothing is left;
/// later it goes on to its end. Fails then, when a conflict is open, when nothing is staged that
/// differs from HEAD (unless a merge is going on), and when a file cannot be stored.
Expected<CommitEntry> commitStaged(WorkingTree& workingTree, const WorkingChanges& changes,
                                   const CommitText& text);

}  // namespace qrv
