#pragma once

#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>

#include <optional>
#include <string>
#include <vector>

namespace qrv {

/// The changes of the files that the words are the paths of, without a look at anything else.
///
/// Nothing when that is not enough to choose and to describe them as a look at the whole tree does:
/// when a word is no path of a regular file that is there and has changed, when a new file may have
/// been another one of HEAD before, when its name is alike to another one, and when anything cannot
/// be told.
std::optional<WorkingChanges> findNamedChanges(const std::vector<std::string>& words,
                                               WorkingTree& workingTree);

}  // namespace qrv
