#pragma once

#include <engine/tree/Tree.h>
#include <engine/worktree/Unseen.h>
#include <engine/worktree/Workspace.h>
#include <platform/kernel/OdString.h>

#include <map>
#include <vector>

namespace qrv {

struct FoundRenames {
    /// From the path of a new file to that of a removed file of HEAD with the same contents; each
    /// in one pair at most.
    std::map<OdString, OdString> renames;
    /// New files that could not be read.
    std::vector<Unseen> unseen;
};

/// Looks for them in the order of the new files. Only files whose sizes are equal are read.
FoundRenames findRenames(Workspace& workspace, const std::vector<SizedFile>& newFiles,
                         const std::vector<SizedFile>& removed);

}  // namespace qrv
