#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <system_error>

namespace sys {

/// How many bytes were read, and why they are no more, if it is not the file's end.
struct ReadBytes {
    std::size_t count = 0;
    std::error_code error;
};

/// Reads until the buffer is full or the file ends, in as many calls as that takes.
ReadBytes readUpTo(int file, std::span<char> buffer);
/// The same from `position` on; the file's own position stays as it is.
ReadBytes readUpToAt(int file, std::int64_t position, std::span<char> buffer);
/// Writes all bytes. After a failure some of them may be there.
std::error_code writeAll(int file, std::span<const char> bytes);

}  // namespace sys
