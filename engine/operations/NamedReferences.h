#pragma once

#include <common/base/Expected.h>
#include <common/server/Reference.h>
#include <engine/base/Caller.h>
#include <engine/base/Export.h>
#include <engine/history/CommitEntry.h>
#include <platform/kernel/OdString.h>

#include <optional>
#include <string>
#include <vector>

namespace qrv {

/// A branch or a tag.
struct NamedReference {
    /// As it was given.
    OdString name;
    /// Where it points: to nothing, for the current branch before its first commit.
    std::optional<CommitEntry> commit;
    /// The branch that the next commit goes to.
    bool isCurrent = false;
};

/// All branches, the current one included, or all tags of the repository that holds `folder`, in
/// the order of their names. Fails when the repository cannot be opened or read.
QRV_ENGINE_EXPORT Expected<std::vector<NamedReference>> listReferences(const std::string& folder,
                                                                       common::RefType type,
                                                                       Caller& caller);

/// A branch or a tag to be made.
struct MakeReference {
    /// Which of the two.
    common::RefType type = common::RefType::Branch;
    /// One that is not there yet.
    OdString name;
    /// The commit as a person calls it: "HEAD", a branch or tag, a number or the beginning of a
    /// hash.
    OdString commit;
};

/// Makes a branch or a tag, and gives the commit that it names. Fails for a name that is none or is
/// there already, for a commit that is not found, and when the repository cannot be opened or
/// changed; nothing is changed then.
QRV_ENGINE_EXPORT Expected<CommitEntry> makeReference(const std::string& folder,
                                                      const MakeReference& wish, Caller& caller);

/// A branch or a tag to be deleted.
struct DeleteReference {
    /// Which of the two.
    common::RefType type = common::RefType::Branch;
    /// One that is there.
    OdString name;
    /// Also a branch with commits that are in no other branch or tag.
    bool force = false;
};

/// Deletes a branch or a tag, and gives the commit that it named. Fails for one that is not there,
/// with the name that may have been meant, for the current branch, without `force` for a branch
/// whose commits nothing else holds, and when the repository cannot be opened or changed; nothing
/// is changed then.
QRV_ENGINE_EXPORT Expected<CommitEntry> deleteReference(const std::string& folder,
                                                        const DeleteReference& wish,
                                                        Caller& caller);

}  // namespace qrv
