#pragma once

#include <common/base/Expected.h>
#include <engine/tree/Tree.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <map>

namespace qrv {

/// The contents of a file in a commit or in the working tree.
struct FileVersion {
    /// The storage URL; empty for contents that only the working file has.
    OdString url;
    /// The digest of such contents; otherwise it is in the URL.
    OdString digest;
    std::int64_t sizeBytes = 0;
};

/// The digest of the contents, wherever they are.
OdString digestOf(const FileVersion& version);

/// The files of a commit, or those of the working tree, by their paths.
using Snapshot = std::map<OdString, FileVersion>;

Snapshot snapshotOf(const Tree& tree);

/// The working files, those included that are not staged. Fails when one that has changed since
/// HEAD cannot be read.
Expected<Snapshot> snapshotOf(WorkingTree& workingTree, const WorkingChanges& changes);

}  // namespace qrv
