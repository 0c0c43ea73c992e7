#include <engine/maintenance/ReadToEnd.h>
#include <engine/storage/CopyBuffer.h>

#include <cstddef>

namespace qrv {

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

}  // namespace qrv
