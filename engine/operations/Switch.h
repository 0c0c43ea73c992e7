#pragma once

#include <common/base/Expected.h>
#include <engine/base/Caller.h>
#include <engine/base/Export.h>
#include <platform/kernel/OdString.h>

#include <cstddef>
#include <optional>
#include <string>

namespace qrv {

/// The branch to work on.
struct SwitchRequest {
    /// Its name.
    OdString branch;
    /// Whether the branch is to be made; without it, it must be there.
    bool create = false;
    /// Where a new branch begins, as a person calls a commit: "HEAD", a branch or tag, a number or
    /// the beginning of a hash. Without it, at the current branch's commit.
    std::optional<OdString> start;
};

/// Where HEAD is now.
struct Switched {
    /// The current branch.
    OdString branch;
    /// Empty before the first commit.
    OdString commit;
    /// Working files that were written or removed.
    std::size_t fileCount = 0;
};

/// Brings the working files to another branch, and makes it the current one. Fails for a branch
/// that is not there, or is there already and was to be made, while a merge is going on, and when a
/// file that differs between the two has changes that are not committed, is open in another
/// program, or when something else lies in its place. Nothing is changed then. A file that another
/// program saves meanwhile is left as it is; what was done is taken back then.
QRV_ENGINE_EXPORT Expected<Switched> switchBranch(const std::string& folder,
                                                  const SwitchRequest& request, Caller& caller);

}  // namespace qrv
