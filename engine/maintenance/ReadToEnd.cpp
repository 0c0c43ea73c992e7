#include <engine/maintenance/ReadToEnd.h>
#include <engine/storage/CopyBuffer.h>

#include <cstddef>

namespace qrv_cli {

Expected<void> readToEnd(VersionReader& version) {
    CopyBuffer buffer(version.sizeBytes());
    for (std::size_t count = buffer.size(); count == buffer.size();) {
        const Expected<std::size_t> read = version.read(buffer.span());
        if (!read)
            return read.error();
        count = *read;
    }
    return {};
}

}  // namespace qrv_cli
