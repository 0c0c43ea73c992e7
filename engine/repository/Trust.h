#pragma once

#include <common/base/Expected.h>
#include <engine/base/Caller.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

namespace qrv {

/// Whoever may write the metadata folder decides what a command does to the working files: so a
/// repository of somebody else is refused, unless the person trusts it. The folder, which is called
/// `path`, and ".qrv" in it, where that is there, must belong to the user of this process, or to
/// another that the caller takes for the same person. Fails with a message that names the owner and
/// says how to trust it.
Expected<void> checkOwner(const sys::Folder& folder, const OdString& path, const Caller& caller);

}  // namespace qrv
