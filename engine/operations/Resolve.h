#pragma once

#include <common/base/Expected.h>
#include <common/state/ConflictData.h>
#include <engine/base/Caller.h>
#include <engine/base/Export.h>
#include <platform/kernel/OdString.h>

#include <string>
#include <vector>

namespace qrv {

/// How a conflict is to end.
struct ResolveRequest {
    /// Which contents the file gets.
    enum class Version {
        mine,    ///< as in HEAD
        theirs,  ///< as in the commit that is being merged
        merged,  ///< as the file lies there
    };

    /// The file with the conflict, as a person wrote it: absolute, or below the current folder.
    std::string path;
    /// The one that is wanted.
    Version version = Version::merged;
    /// Whether contents that are kept nowhere may be replaced: they are stored first, and the
    /// caller is told under which name.
    bool force = false;
};

/// A conflict that was ended.
struct Resolved {
    /// Below the root of the repository.
    OdString path;
    /// What is still open.
    std::vector<common::ConflictData> conflicts;
};

/// Brings a file to one of the versions of its conflict, stages it when it differs from HEAD, and
/// ends the conflict. Fails for a file without a conflict, for one whose contents are kept nowhere
/// (without `force`), and for one that is open in another program; the conflict stays then, and the
/// file as it is.
QRV_ENGINE_EXPORT Expected<Resolved> resolve(const std::string& folder,
                                             const ResolveRequest& request, Caller& caller);

}  // namespace qrv
