#pragma once

#include <common/worktree/File.h>
#include <common/worktree/StatusRef.h>
#include <platform/kernel/OdString.h>

#include <vector>

namespace common {

/// A file that does not differ from its stored version.
struct UnchangedFile {
    OdString path;
    /// The storage URL of that version.
    OdString url;
};

/// How the working tree differs from the last commit. The host computes it.
struct RepoChanges {
    /// Every change; the staging explorer only asks whether there is any.
    std::vector<StatusRef> changes;
    std::vector<UnchangedFile> unchanged;
    std::vector<File> modified;
    std::vector<File> added;
    std::vector<File> removed;
};

}  // namespace common
