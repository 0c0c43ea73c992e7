#pragma once

#include <common/base/Expected.h>
#include <common/server/Reference.h>
#include <engine/base/Caller.h>
#include <engine/base/Export.h>
#include <engine/diff/Difference.h>
#include <engine/history/CommitEntry.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qrv {

/// Takes the contents of a file, part after part.
using ContentsSink = std::function<void(std::string_view part)>;

/// A commit with what it changed.
struct ShownCommit {
    /// What the history says of it.
    CommitEntry commit;
    /// Compared with its first parent.
    std::vector<Difference> changes;
    /// All branches and tags, those of other commits, too.
    std::vector<common::Reference> references;
};

/// Shows the commit `object`, as a person calls it: "HEAD", a branch or tag, a number or the
/// beginning of a hash. With ":" and the path of a file behind it (absolute, or below the current
/// folder), gives the contents that the file has there to `contents`, and no commit; without a
/// `contents`, they are not read.
///
/// Fails for a commit or a file that is not found, and when the repository cannot be opened or
/// read. Damaged contents are found at their end: what was given out by then is not to be believed.
QRV_ENGINE_EXPORT Expected<std::optional<ShownCommit>> show(const std::string& folder,
                                                            const std::string& object,
                                                            const ContentsSink& contents,
                                                            Caller& caller);

}  // namespace qrv
