#pragma once

#include <engine/worktree/WorkingTree.h>

#include <memory>
#include <string>

namespace qrv {

/// Opens a repository with its working tree (see `WorkingTree::open`). For a change, what an
/// interrupted command left is settled first, and told; a look only tells it. Fails, too, when
/// that cannot be settled. May throw `DatabaseError`.
Expected<std::unique_ptr<WorkingTree>> openTree(const std::string& folder, Repository::Use use,
                                                Caller& caller,
                                                WorkingTree::Scan scan = WorkingTree::Scan::later);

}  // namespace qrv
