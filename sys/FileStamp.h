#pragma once

#include <cstdint>

namespace sys {

/// What tells one version of a file from another without reading either: whoever changes or
/// replaces the file changes one of these, unless it happens within one tick of the file system's
/// clock.
struct FileStamp {
    /// Of the file within its file system.
    std::uint64_t number = 0;
    std::int64_t sizeBytes = 0;
    /// Of the contents, in nanoseconds since 1970-01-01T00:00:00Z.
    std::int64_t modifiedNs = 0;
    /// Of the contents, the name or the permissions.
    std::int64_t changedNs = 0;

    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

}  // namespace sys
