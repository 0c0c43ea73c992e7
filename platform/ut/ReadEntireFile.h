#pragma once

#include <platform/kernel/Export.h>
#include <platform/kernel/OdString.h>

namespace ut {

/// The whole text of a regular file: UTF-8 with or without a byte-order mark, or UTF-16 with one.
/// The mark is not part of the text. Throws `OdError` that names the file and the cause when it
/// cannot be read.
QRV_PLATFORM_EXPORT OdString readEntireFile(const OdString& path);

}  // namespace ut
