#pragma once

#include <sys/Folder.h>

#include <span>
#include <string>
#include <system_error>

namespace sys {

/// Adds bytes behind the last one of an existing regular file below the folder, and flushes them to
/// the disk. What the file holds is not touched, and after a failure it has its old end again,
/// unless that fails as well. A path is taken and refused as by `Folder::openFile`.
[[nodiscard]] std::error_code append(const Folder& folder, const std::string& relative,
                                     std::span<const char> bytes);

}  // namespace sys
