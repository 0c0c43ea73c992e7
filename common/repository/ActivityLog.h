#pragma once

#include <common/base/Export.h>
#include <common/repository/RootPath.h>
#include <platform/kernel/OdString.h>

namespace common {

/// Appends one line to the activity log of `root`: the local time, " - " and the message, as UTF-8.
/// False, and nothing written, when the log cannot be opened; a failure after that is not noticed.
/// The log is never trimmed.
QRV_COMMON_EXPORT bool logString(const OdString& message, const RootPath& root);

}  // namespace common
