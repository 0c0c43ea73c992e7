#pragma once

#include <engine/operations/NamedReferences.h>
#include <engine/worktree/Workspace.h>

namespace qrv {

// The operations of NamedReferences.h in an open workspace. Making and deleting need the lock. Each
// may throw `DatabaseError`.

std::vector<NamedReference> listReferences(Workspace& workspace, common::RefType type);
Expected<CommitEntry> makeReference(Workspace& workspace, const MakeReference& wish);
Expected<CommitEntry> deleteReference(Workspace& workspace, const DeleteReference& wish);

}  // namespace qrv
