#pragma once

#include <common/base/Expected.h>
#include <common/worktree/File.h>
#include <engine/base/Caller.h>
#include <engine/base/Export.h>

#include <string>
#include <vector>

namespace qrv {

/// What is to be taken off the stage.
struct UnstageRequest {
    /// Staged files, folders of them, globs, or the end of a file's name, each as a person wrote
    /// it: absolute, below the current folder, or the name alone.
    std::vector<std::string> paths;
    /// Everything, whatever `paths` says.
    bool all = false;
};

/// Takes files off the stage, and gives them with the changes that were staged. The files
/// themselves stay as they are. Fails for a path that means no staged file, and when the repository
/// cannot be opened or changed; nothing is changed then.
QRV_ENGINE_EXPORT Expected<std::vector<common::StagedFile>> unstage(const std::string& folder,
                                                                    const UnstageRequest& request,
                                                                    Caller& caller);

}  // namespace qrv
