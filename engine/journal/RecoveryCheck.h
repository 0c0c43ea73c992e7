#pragma once

#include <common/base/Expected.h>
#include <engine/history/JournalEntry.h>
#include <engine/worktree/WorkingTree.h>

namespace qrv {

/// Whether what a noted entry would do is what a command of this program can have left, as if the
/// entry came from a stranger:
///
/// - its commit is in the history, and the steps lead from the files of HEAD to those of that
///   commit;
/// - without a commit, each file gets a version that some commit has at that very path;
/// - what is replaced or removed is kept, so that nothing is lost with it.
///
/// Paths, URLs and the names of references were checked when the entry was read, and the way to
/// each file is when it is gone. Fails with a message that names the cause.
Expected<void> checkNotedEntry(WorkingTree& workingTree, const JournalEntry& entry);

}  // namespace qrv
