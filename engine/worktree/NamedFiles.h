#pragma once

#include <common/base/Expected.h>
#include <engine/worktree/TreeScan.h>
#include <engine/worktree/WorkingTree.h>
#include <platform/kernel/OdString.h>

#include <memory>
#include <vector>

namespace qrv {

/// What lies under some paths of a working tree, in the words of a `TreeScan` that passes over
/// everything else.
struct NamedFiles {
    /// Of those that are in HEAD.
    std::shared_ptr<const Baseline> baseline;
    std::vector<TreeScan::Known> candidates;
    std::vector<TreeScan::Other> others;
    std::vector<Unseen> unseen;
    /// What is wrong with the ignore rules.
    std::vector<OdString> messages;
};

/// Looks at the files of these paths, ordered and each once: asks the system for each, and the
/// history for what HEAD has there. Fails when the metadata folder is not what it has to be.
Expected<NamedFiles> lookAtNamed(WorkingTree& workingTree, const std::vector<OdString>& paths);

}  // namespace qrv
