#pragma once

#include <common/base/Expected.h>
#include <common/worktree/File.h>
#include <engine/base/Caller.h>
#include <engine/base/Export.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <string>
#include <vector>

namespace qrv {

/// Files to be staged.
struct AddRequest {
    /// As a person types them: files and folders, absolute or below the current folder; globs; ends
    /// of files' names.
    std::vector<std::string> paths;
    /// Everything that has changed, whatever the paths say.
    bool all = false;
    /// A file with more is told in `Added::large`; 0: none is.
    std::int64_t largeFileBytes = 0;
};

/// A file that takes much room.
struct LargeFile {
    /// Below the root of the repository.
    OdString path;
    /// Of its contents.
    std::int64_t sizeBytes = 0;
};

/// A new name that not every system can hold beside the others.
struct OddName {
    /// The new file or a folder above it.
    OdString path;
    /// What is one with it for a system that tells neither letter case nor accents apart; empty for
    /// a name that Windows cannot hold at all.
    OdString other;
};

/// A drawing that somebody seems to have open.
struct OpenDrawing {
    /// Below the root of the repository.
    OdString path;
    /// What the CAD program laid beside it.
    OdString lockPath;
};

/// What was staged, and what a person should know before it is committed.
struct Added {
    /// Ordered by path; of a renaming both halves.
    std::vector<common::StagedFile> staged;
    /// Those with more than the request says, ordered by path.
    std::vector<LargeFile> large;
    /// Of all that is staged now.
    std::int64_t stagedBytes = 0;
    /// In the order of the new files; each pair once.
    std::vector<OddName> oddNames;
    /// What is not saved is not committed.
    std::vector<OpenDrawing> open;
};

/// Stages changed files in the repository that holds `folder`, in place of what was staged under
/// their paths. A file whose path could not be used on every system is left out, and the caller is
/// told, unless a word names it: then it is an error. Fails, too, for a word that stands for no
/// changed file or for several, when anything in the working tree cannot be looked at, and when the
/// repository cannot be opened or changed; nothing is staged then.
QRV_ENGINE_EXPORT Expected<Added> add(const std::string& folder, const AddRequest& request,
                                      Caller& caller);

}  // namespace qrv
