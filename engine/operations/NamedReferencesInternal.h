#pragma once

#include <engine/operations/NamedReferences.h>
#include <engine/repository/Repository.h>

namespace qrv {

// The operations of NamedReferences.h in an open repository. Making and deleting need the lock.
// Each may throw `DatabaseError`.

std::vector<NamedReference> listReferences(Repository& repository, common::RefType type);
Expected<CommitEntry> makeReference(Repository& repository, const MakeReference& wish);
Expected<CommitEntry> deleteReference(Repository& repository, const DeleteReference& wish);

/// The text, which tells that there is no branch or tag of the name, and the name that may have
/// been meant.
ErrorMessage withNearName(OdString text, History& history, common::RefType type,
                          const OdString& name);

}  // namespace qrv
