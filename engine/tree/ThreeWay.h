#pragma once

#include <common/worktree/FileChange.h>
#include <engine/paths/RelativePath.h>
#include <engine/tree/TreeChange.h>
#include <engine/tree/TreeStep.h>
#include <platform/kernel/OdString.h>

#include <vector>

namespace qrv {

/// A file that both sides changed, each in its own way.
struct MergeConflict {
    RelativePath path;
    common::FileChange local = common::FileChange::modified;
    common::FileChange remote = common::FileChange::modified;
    /// The storage URLs of the two versions; empty where the file was removed.
    OdString localUrl;
    OdString remoteUrl;

    friend bool operator==(const MergeConflict&, const MergeConflict&) = default;
};

/// What a merge does to our tree. Both lists are ordered by path.
struct ThreeWayResult {
    /// Files that only the other side changed: they come over as they are.
    std::vector<TreeStep> taken;
    std::vector<MergeConflict> conflicts;
};

/// Compares what two sides did to the tree that both come from, file by file. What both changed to
/// the same contents, or both removed, is no conflict. Both lists of changes are ordered by path.
ThreeWayResult compareThreeWays(const std::vector<TreeChange>& ours,
                                const std::vector<TreeChange>& theirs);

}  // namespace qrv
