#pragma once

#include <common/base/Expected.h>
#include <engine/base/Caller.h>
#include <engine/base/Export.h>
#include <engine/maintenance/Collected.h>

#include <string>

namespace qrv {

/// How the repository is to be made smaller.
struct CollectGarbageRequest {
    /// Only count what would be done.
    bool onlyLook = false;
};

/// Makes the repository that holds `folder` smaller without losing anything that a commit names:
/// packs what neither HEAD nor the tip of a branch needs, and forgets what no commit has named for
/// two weeks, and what killed processes left. Whenever the process is killed, nothing is lost, and
/// the next run goes on. What could not be collected is no failure but among the problems of the
/// answer.
///
/// Fails, with nothing changed, when the repository cannot be opened, or changed, and when its
/// history is damaged: then nobody knows what is needed.
QRV_ENGINE_EXPORT Expected<Collected> collectGarbage(const std::string& folder,
                                                     const CollectGarbageRequest& request,
                                                     Caller& caller);

}  // namespace qrv
