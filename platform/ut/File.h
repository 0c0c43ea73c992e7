#pragma once

#include <platform/kernel/Export.h>
#include <platform/kernel/OdString.h>

#include <cstddef>
#include <cstdint>

namespace ut {

/// A regular file opened for reading. Anything else (a folder, a pipe, a device) cannot be opened,
/// so opening never blocks.
class QRV_PLATFORM_EXPORT File {
public:
    File() = default;
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    /// Closes the file.
    ~File();

    /// Closes what was open and opens `path` for reading. False when it cannot be opened.
    bool open(const OdString& path);
    /// Closes what is open; the length is 0 then.
    void close();
    /// Whether a file is open.
    bool isOpened() const { return descriptor_ >= 0; }

    /// The file's size in bytes when it was opened; 0 when none is open.
    std::int64_t length() const { return length_; }
    /// Reads the next bytes, at most `size`, into `buffer` and gives their number, which is less
    /// than `size` only at the end of the file or on a failure.
    std::size_t read(void* buffer, std::size_t size);

private:
    int descriptor_ = -1;
    std::int64_t length_ = 0;
};

}  // namespace ut
