#include <engine/storage/ReadToEnd.h>

#include <span>

namespace qrv {

Expected<void> readToEnd(VersionReader& version) {
    CopyBuffer buffer(version.sizeBytes());
    return readToEnd(version, buffer, [](std::span<const char>) { return Expected<void>(); });
}

}  // namespace qrv
