#pragma once

#include <sys/FileStamp.h>

#include <sys/stat.h>

#include <cstdint>

namespace sys {

/// Nanoseconds since 1970-01-01T00:00:00Z. A time that does not fit, some centuries away, becomes
/// the nearest that does.
std::int64_t modifiedNs(const struct stat& status);
/// The same for the time of the last change of contents, name or permissions.
std::int64_t changedNs(const struct stat& status);
FileStamp stampOf(const struct stat& status);

/// What `chmod` sets.
std::uint32_t permissionsOf(const struct stat& status);

}  // namespace sys
