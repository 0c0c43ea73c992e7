#pragma once

#include <common/base/Expected.h>
#include <engine/storage/VersionReader.h>

namespace qrv {

/// Reads a version to its end, where its size and digest are compared, and forgets its bytes.
/// Fails when it cannot be read or is damaged.
Expected<void> readToEnd(VersionReader& version);

}  // namespace qrv
