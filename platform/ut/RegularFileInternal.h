#pragma once

#include <platform/kernel/OdString.h>
#include <platform/ut/DescriptorInternal.h>

#include <sys/types.h>

#include <cstddef>
#include <cstdint>

namespace ut {

/// Stands beside the numbers of <cerrno>, which have none that says this.
inline constexpr int notARegularFile = -1;

/// A regular file that was opened, or the cause why it was not.
struct OpenedFile {
    Descriptor descriptor;
    std::int64_t sizeBytes = 0;
    int errorNumber = 0;
};
/// Opens the regular file `path` with the system's `flags` and, for one that is made, the
/// permission bits `mode`. Anything but a regular file is refused, and opening never waits for the
/// other end of a pipe.
OpenedFile openRegularFile(const OdString& path, int flags, mode_t mode = 0);
/// The same for everything but a folder: a device, and a pipe whose other end is open too.
OpenedFile openNoFolder(const OdString& path, int flags, mode_t mode = 0);

/// The number of bytes that were read, and the cause why they are no more, if it is not the file's
/// end.
struct ReadBytes {
    std::size_t count = 0;
    int errorNumber = 0;
};
/// Reads up to `size` bytes into `buffer`, in as many calls as that takes.
ReadBytes readUpTo(int descriptor, void* buffer, std::size_t size);

}  // namespace ut
