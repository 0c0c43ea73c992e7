#pragma once

#include <common/base/Expected.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

namespace qrv_cli {

/// Whoever may write the metadata folder decides what a command does to the working files: so a
/// repository of somebody else is refused, unless the user's settings name it (see
/// `trustedFolders`). The folder, which is called `path`, and ".qrv" in it, where that is there,
/// must belong to the user of this process. To root, what `sudo` was called from counts as its own,
/// and nobody else's. Fails with a message that names the owner and says how to trust it.
Expected<void> checkOwner(const sys::Folder& folder, const OdString& path);

}  // namespace qrv_cli
