#pragma once

#include <engine/operations/NamedReferences.h>
#include <engine/worktree/WorkingTree.h>

namespace qrv {

// The operations of NamedReferences.h in an open working tree. Making and deleting need the lock.
// Each may throw `DatabaseError`.

std::vector<NamedReference> listReferences(WorkingTree& workingTree, common::RefType type);
Expected<CommitEntry> makeReference(WorkingTree& workingTree, const MakeReference& wish);
Expected<CommitEntry> deleteReference(WorkingTree& workingTree, const DeleteReference& wish);

/// The text, which tells that there is no branch or tag of the name, and the name that may have
/// been meant.
ErrorMessage withNearName(OdString text, History& history, common::RefType type,
                          const OdString& name);

}  // namespace qrv
