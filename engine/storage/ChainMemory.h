#pragma once

#include <common/base/Expected.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <span>
#include <string>

namespace qrv {

/// Whether there is memory to read contents that are kept as a difference. `sizes` are those of the
/// contents, of what they build on, and so on. Fails with a message that says how much is missing
/// for the version `digest` in the file `path`.
Expected<void> requireMemoryFor(std::span<const std::int64_t> sizes, const std::string& digest,
                                const OdString& path);

}  // namespace qrv
