#include <sys/CallsInternal.h>
#include <sys/InputFile.h>
#include <sys/StatusInternal.h>

namespace sys {

Outcome<std::size_t> InputFile::read(std::span<char> buffer) {
    std::size_t total = 0;
    while (total < buffer.size()) {
        const ssize_t count =
            calls::read(handle_.number(), buffer.data() + total, buffer.size() - total);
        if (count < 0)
            return calls::lastError();
        if (count == 0)
            break;
        total += static_cast<std::size_t>(count);
    }
    return total;
}

Outcome<std::vector<char>> InputFile::readWhole(std::size_t mostBytes) const {
    const Outcome<FileStamp> now = stamp();
    if (!now)
        return now.error();
    if (std::cmp_greater(now->sizeBytes, mostBytes))
        return std::make_error_code(std::errc::file_too_large);
    std::vector<char> bytes(static_cast<std::size_t>(now->sizeBytes));
    const Outcome<std::size_t> count = readAt(0, bytes);
    if (!count)
        return count.error();
    bytes.resize(*count);
    return bytes;
}

Outcome<std::size_t> InputFile::readAt(std::int64_t position, std::span<char> buffer) const {
    std::size_t total = 0;
    while (total < buffer.size()) {
        const ssize_t count =
            calls::readAt(handle_.number(), buffer.data() + total, buffer.size() - total,
                          position + static_cast<std::int64_t>(total));
        if (count < 0)
            return calls::lastError();
        if (count == 0)
            break;
        total += static_cast<std::size_t>(count);
    }
    return total;
}

Outcome<std::uint64_t> InputFile::countNames() const {
    struct stat status = {};
    if (calls::status(handle_.number(), status) < 0)
        return calls::lastError();
    return std::uint64_t{status.st_nlink};
}

Outcome<FileStamp> InputFile::stamp() const {
    struct stat status = {};
    if (calls::status(handle_.number(), status) < 0)
        return calls::lastError();
    return stampOf(status);
}

bool InputFile::isInUse() const {
    return calls::isOpenForWriting(handle_.number()) || calls::isLocked(handle_.number());
}

}  // namespace sys
