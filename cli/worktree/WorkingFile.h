#pragma once

#include <common/base/Expected.h>
#include <platform/kernel/OdString.h>
#include <platform/sys/Folder.h>

#include <cstdint>

namespace qrv_cli {

/// The SHA-256 digest of a working file; empty when nothing lies there, or a folder. Fails when it
/// cannot be read, or is anything else.
Expected<OdString> digestOfFile(const sys::Folder& root, const OdString& path);

/// A time in nanoseconds since 1970 as the index notes it, in ticks of `ut::DateTime`.
std::int64_t toTicks(std::int64_t modifiedNs);

}  // namespace qrv_cli
