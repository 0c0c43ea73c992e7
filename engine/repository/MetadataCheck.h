#pragma once

#include <common/base/Expected.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

namespace qrv {

/// What lies in the metadata folder may come from a stranger, and the library opens it by its path.
/// So the program looks first, and again afterwards: the folder and each file and folder that it
/// keeps there must be one, and no symbolic link, which would lead elsewhere.
///
/// `folder` is the root and `root` its path, for the messages. What is missing is no error. Fails
/// with a message that names the first file or folder that is something else, or that nobody can
/// look at.
Expected<void> checkMetadata(const sys::Folder& folder, const OdString& root);

}  // namespace qrv
