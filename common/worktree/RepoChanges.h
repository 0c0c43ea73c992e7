#pragma once

#include <common/worktree/File.h>
#include <common/worktree/StatusRef.h>
#include <platform/kernel/OdString.h>

#include <vector>

namespace common {

/// A file that does not differ from its stored version.
struct UnchangedFile {
    OdString path;  ///< relative to the repository's root
    OdString url;   ///< the storage URL of that version
};

/// How the working tree differs from the last commit. The host computes it.
struct RepoChanges {
    /// Every change; the staging explorer only asks whether there is any.
    std::vector<StatusRef> changes;
    std::vector<UnchangedFile> unchanged;  ///< files that are as they were committed
    std::vector<File> modified;            ///< files that differ from what was committed
    std::vector<File> added;               ///< files that were not committed yet
    std::vector<File> removed;             ///< committed files that are gone
};

}  // namespace common
