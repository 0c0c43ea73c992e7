#pragma once

#include <platform/kernel/OdString.h>
#include <sys/Handle.h>

#include <sys/types.h>

#include <cstdint>

namespace ut {

/// Stands beside the numbers of <cerrno>, which have none that says this.
inline constexpr int notARegularFile = -1;

/// A regular file that was opened, or the cause why it was not.
struct OpenedFile {
    sys::Handle handle;
    std::int64_t sizeBytes = 0;
    int errorNumber = 0;
};
/// Opens the regular file `path` with the system's `flags` and, for one that is made, the
/// permission bits `mode`. Anything but a regular file is refused, and opening never waits for the
/// other end of a pipe.
OpenedFile openRegularFile(const OdString& path, int flags, mode_t mode = 0);
/// The same for everything but a folder: a device, and a pipe whose other end is open too.
OpenedFile openNoFolder(const OdString& path, int flags, mode_t mode = 0);

}  // namespace ut
