#pragma once

#include <common/base/Expected.h>
#include <engine/storage/ObjectFolder.h>
#include <platform/kernel/OdString.h>
#include <sys/InputFile.h>

#include <optional>
#include <string>

namespace qrv {

/// Reads a working file once, and makes an object of it that waits among `objects` for its name,
/// unless there is one already. Gives its digest, or nothing when its stamp is not `before` any
/// more at the end. `path` is for the messages.
Expected<std::optional<std::string>> storeObject(ObjectFolder& objects, sys::InputFile& source,
                                                 const sys::FileStamp& before,
                                                 const OdString& path);

}  // namespace qrv
