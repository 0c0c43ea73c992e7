#pragma once

#include <platform/kernel/OdString.h>

#include <vector>

namespace qrv {

// Of paths below a root, whose parts are parted by "/".

/// The folder that holds the file or folder `path`; empty when that is the root.
OdString parentOf(const OdString& path);

/// The same as the system is told it: "." for the root.
OdString folderOf(const OdString& path);

/// The last part.
OdString nameOf(const OdString& path);

/// Whether `path` is one of `chosen` or lies below one of them. The empty text chooses everything.
bool isChosen(const OdString& path, const std::vector<OdString>& chosen);

}  // namespace qrv
