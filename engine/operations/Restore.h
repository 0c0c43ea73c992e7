#pragma once

#include <common/base/Expected.h>
#include <engine/base/Caller.h>
#include <engine/base/Export.h>
#include <platform/kernel/OdString.h>

#include <optional>
#include <string>
#include <vector>

namespace qrv {

/// Which files are to come back.
struct RestoreRequest {
    /// Files and folders of the commit, each as a person wrote it: absolute, or below the current
    /// folder.
    std::vector<std::string> paths;
    /// As a person calls a commit: "HEAD", a branch or tag, a number or the beginning of a hash.
    /// Without it, HEAD.
    std::optional<OdString> commit;
    /// Whether nothing is to be done but tell which files it would be.
    bool dryRun = false;
    /// Whether what lies there may be replaced although it is kept nowhere. In the working tree it
    /// is stored first, and the caller is told under which name.
    bool force = false;
};

/// Brings working files to their versions in a commit, and gives the paths of those that were not
/// as wanted, in order. Fails for a commit or a file that is not found, for files whose contents
/// are kept nowhere (without `force`) or that are open in another program, and where something else
/// lies in their place; nothing is changed then. A file that another program saves meanwhile is
/// left as it is; what was done is taken back then.
QRV_ENGINE_EXPORT Expected<std::vector<OdString>> restoreFiles(const std::string& folder,
                                                               const RestoreRequest& request,
                                                               Caller& caller);

/// Writes files of a commit below another folder, which is made when it is missing, and gives their
/// paths there, in order. Files that belong to the repository itself are left out, and the caller
/// is told how many. Fails for a commit or a file that is not found, for a target in the
/// repository, for one of these files alone, and for a file that is there already (without
/// `force`); what was written by then stays.
QRV_ENGINE_EXPORT Expected<std::vector<OdString>> exportFiles(const std::string& folder,
                                                              const RestoreRequest& request,
                                                              const std::string& target,
                                                              Caller& caller);

}  // namespace qrv
