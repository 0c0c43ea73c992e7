#pragma once

#include <engine/operations/NamedReferences.h>
#include <engine/worktree/WorkingTree.h>

namespace qrv {

// The operations of NamedReferences.h in an open workingTree. Making and deleting need the lock.
// Each may throw `DatabaseError`.

std::vector<NamedReference> listReferences(WorkingTree& workingTree, common::RefType type);
Expected<CommitEntry> makeReference(WorkingTree& workingTree, const MakeReference& wish);
Expected<CommitEntry> deleteReference(WorkingTree& workingTree, const DeleteReference& wish);

}  // namespace qrv
