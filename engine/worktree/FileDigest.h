#pragma once

#include <common/base/Expected.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

namespace qrv {

/// The SHA-256 digest of a working file; empty when nothing lies there, or a folder. Fails when it
/// cannot be read, or is anything else.
sys::Outcome<OdString> tryDigestOfFile(const sys::Folder& root, const OdString& path);

/// The same; the error names the file.
Expected<OdString> digestOfFile(const sys::Folder& root, const OdString& path);

}  // namespace qrv
