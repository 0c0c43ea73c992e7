#include <sys/CallsInternal.h>
#include <sys/TransferInternal.h>

namespace sys {

namespace {

template <class Read>
ReadBytes readInPieces(std::span<char> buffer, Read read) {
    ReadBytes result;
    while (result.count < buffer.size()) {
        const ssize_t count = read(result.count);
        if (count < 0)
            result.error = calls::lastError();
        if (count <= 0)
            break;
        result.count += static_cast<std::size_t>(count);
    }
    return result;
}

}  // namespace

ReadBytes readUpTo(int file, std::span<char> buffer) {
    return readInPieces(buffer, [&](std::size_t begin) {
        return calls::read(file, buffer.data() + begin, buffer.size() - begin);
    });
}

ReadBytes readUpToAt(int file, std::int64_t position, std::span<char> buffer) {
    return readInPieces(buffer, [&](std::size_t begin) {
        return calls::readAt(file, buffer.data() + begin, buffer.size() - begin,
                             position + static_cast<std::int64_t>(begin));
    });
}

std::error_code writeAll(int file, std::span<const char> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = calls::write(file, bytes.data(), bytes.size());
        if (count <= 0)
            return count < 0 ? calls::lastError() : std::make_error_code(std::errc::io_error);
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return {};
}

}  // namespace sys
