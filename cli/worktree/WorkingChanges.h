#pragma once

#include <cli/worktree/Workspace.h>
#include <common/worktree/RepoChanges.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <map>
#include <vector>

namespace qrv_cli {

/// How the working tree differs from HEAD.
struct WorkingChanges {
    /// As the library takes them, but without the unchanged files, of which there are many and
    /// which few ask for (see `unchangedFiles`). Each list is ordered by path.
    common::RepoChanges files;
    /// From the new path of a file that is in `files.added` to its path in HEAD, which is in
    /// `files.removed`: both have the same contents.
    std::map<OdString, OdString> renames;
    /// Everything that the scan found, and files of HEAD that are there although a rule ignores
    /// them; ordered.
    std::vector<OdString> present;
    /// Symbolic links, which are not versioned; ordered.
    std::vector<OdString> links;

    bool isEmpty() const { return files.changes.empty(); }
};

/// Scans the working tree and compares it with HEAD.
///
/// A file whose size is that of HEAD and whose time is that of an index entry which says that it is
/// not modified, is not read. It is read all the same when its time is not safely older than the
/// state file, because it may have changed within the same tick of the clock after it was looked
/// at. What was found by reading goes back into the index, if the workspace may be changed.
Expected<WorkingChanges> findChanges(Workspace& workspace);

/// The files of HEAD that are as they were committed, ordered by path.
std::vector<common::UnchangedFile> unchangedFiles(const WorkingChanges& changes,
                                                  Workspace& workspace);

/// What a path is in `changes`; `unchanged` for everything that is in none of the lists.
common::FileChange changeOf(const OdString& path, const WorkingChanges& changes);

}  // namespace qrv_cli
