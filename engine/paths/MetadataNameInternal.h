#pragma once

#include <string_view>

namespace qrv {

/// Whether a file system could take the name, one component of a path, for the metadata folder's.
/// Decided by rule and not by system: the disk under this system may be another one's.
bool couldBeMetadataFolder(std::string_view name);

}  // namespace qrv
