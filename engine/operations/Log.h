#pragma once

#include <common/base/Expected.h>
#include <common/server/Reference.h>
#include <engine/base/Caller.h>
#include <engine/base/Export.h>
#include <engine/history/CommitEntry.h>
#include <platform/kernel/OdString.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace qrv {

/// Which commits are wanted.
struct LogRequest {
    /// The newest, as a person calls a commit: "HEAD", a branch or tag, a number or the beginning
    /// of a hash. Without it, the current branch's.
    std::optional<OdString> commit;
    /// At most so many.
    std::optional<std::size_t> count;
    /// Only those that changed this file, also under former names, or something in this folder; as
    /// a person wrote it: absolute, or below the current folder.
    std::optional<std::string> path;
};

/// Commits, and what they are called.
struct Log {
    /// A commit and all that it builds on, newest first; none before the first commit.
    std::vector<CommitEntry> commits;
    /// All branches and tags.
    std::vector<common::Reference> references;
    /// The current branch.
    OdString branch;
};

/// Fails for a commit that is not found, and for a path that no commit has changed.
QRV_ENGINE_EXPORT Expected<Log> log(const std::string& folder, const LogRequest& request,
                                    Caller& caller);

}  // namespace qrv
