#pragma once

#include <common/base/Expected.h>
#include <common/server/Reference.h>
#include <engine/history/Commit.h>
#include <engine/worktree/Workspace.h>
#include <platform/kernel/OdString.h>

#include <optional>
#include <vector>

namespace qrv {

/// A branch or a tag, and where it points: to nothing, for the current branch before its first
/// commit.
struct NamedReference {
    OdString name;
    std::optional<CommitEntry> commit;
};

/// All branches, the current one included, or all tags, in the order of their names. May throw
/// `DatabaseError`.
std::vector<NamedReference> listReferences(Workspace& workspace, common::RefType type);

struct MakeReference {
    common::RefType type = common::RefType::Branch;
    OdString name;
    /// The commit as a person calls it (see CommitName.h).
    OdString commit;
};

/// Makes a branch or a tag, and gives the commit that it names. Fails for a name that is none or is
/// there already, and for a commit that is not found; nothing is changed then. Needs the lock. May
/// throw `DatabaseError`.
Expected<CommitEntry> makeReference(Workspace& workspace, const MakeReference& wish);

struct DeleteReference {
    common::RefType type = common::RefType::Branch;
    OdString name;
    /// Also a branch with commits that are in no other branch or tag.
    bool force = false;
};

/// Deletes a branch or a tag, and gives the commit that it named. Fails for one that is not there,
/// with the name that may have been meant, for the current branch, and without `force` for a branch
/// whose commits nothing else holds; nothing is changed then. Needs the lock. May throw
/// `DatabaseError`.
Expected<CommitEntry> deleteReference(Workspace& workspace, const DeleteReference& wish);

}  // namespace qrv
