#pragma once

#include <common/base/Expected.h>
#include <engine/base/Caller.h>
#include <engine/base/Export.h>
#include <platform/kernel/OdString.h>

#include <string>
#include <vector>

namespace qrv {

/// What a scan of the working tree finds, as paths relative to the root.
struct ListedFiles {
    /// The files that are versioned, in the order of the walk.
    std::vector<OdString> files;
    /// What nobody could look at: folders, of which the root is the empty path, and the ignore
    /// rules. Below them may be more files.
    std::vector<OdString> unread;
};

/// The files that the ignore rules leave of the repository that holds `folder`. The caller is told
/// of lines that are no rules. Fails when the repository cannot be opened.
QRV_ENGINE_EXPORT Expected<ListedFiles> listFiles(const std::string& folder, Caller& caller);

}  // namespace qrv
