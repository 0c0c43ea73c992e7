#pragma once

#include <common/worktree/RepoChanges.h>
#include <engine/tree/Renames.h>
#include <engine/worktree/Baseline.h>
#include <engine/worktree/Unseen.h>
#include <engine/worktree/WorkingTree.h>
#include <platform/kernel/OdString.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace qrv {

/// How the working tree differs from HEAD.
struct WorkingChanges {
    /// As the library takes them, but without the unchanged files, of which there are many and
    /// which few ask for (see `unchangedFiles`). Each list is ordered by path.
    common::RepoChanges files;
    /// From the new path of a file that is in `files.added` to its path in HEAD, which is in
    /// `files.removed`: both have the same contents.
    Renames renames;
    /// Symbolic links, which are not versioned; ordered.
    std::vector<OdString> links;
    /// What could not be looked at (see `sortedUnseen`). It is in none of the lists, but a file
    /// that is seen to be new and cannot be read is in that of the new ones.
    std::vector<Unseen> unseen;
    /// What the working tree was compared with: the files of HEAD, or those that were named.
    std::shared_ptr<const Baseline> baseline;

    bool isEmpty() const { return files.changes.empty(); }
    /// The number of `presentFiles`.
    std::size_t presentCount() const;
};

/// Scans the working tree and compares it with HEAD.
///
/// A file whose size is that of HEAD is only read when its time is not one that the baseline
/// believes. What was found by reading is noted beside the files of HEAD, if the lock is held.
/// Fails when anything cannot be looked at, and names it: who goes on from there must not take what
/// is out of sight for removed, or for as in HEAD.
Expected<WorkingChanges> findChanges(WorkingTree& workingTree);

/// The same for whoever only shows it: what cannot be looked at is in `unseen`.
Expected<WorkingChanges> findVisibleChanges(WorkingTree& workingTree);

/// The changes of the files of these paths and of no others. Everything but these, whether it can
/// be looked at or not, is left alone: what the lists do not have is either as in HEAD or was not
/// asked for, and renames are not sought.
Expected<WorkingChanges> findChangesOf(WorkingTree& workingTree, std::vector<OdString> paths);

/// The regular files that are in the working tree: everything that the scan found, and files of
/// HEAD that are there although a rule ignores them; ordered.
std::vector<OdString> presentFiles(const WorkingChanges& changes);

/// Whether the path is that of one of these files.
bool isPresent(const OdString& path, const WorkingChanges& changes);

/// The files of HEAD that are as they were committed, ordered by path.
std::vector<common::UnchangedFile> unchangedFiles(const WorkingChanges& changes,
                                                  WorkingTree& workingTree);

/// What a path is in `changes`; `unchanged` for everything that is in none of the lists.
common::FileChange changeOf(const OdString& path, const WorkingChanges& changes);

}  // namespace qrv
