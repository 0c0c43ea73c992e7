#include <sys/CallsInternal.h>
#include <sys/InputFile.h>
#include <sys/StatusInternal.h>
#include <sys/TransferInternal.h>

namespace sys {

namespace {

Outcome<std::size_t> toOutcome(const ReadBytes& bytes) {
    if (bytes.error)
        return bytes.error;
    return bytes.count;
}

}  // namespace

Outcome<std::size_t> InputFile::read(std::span<char> buffer) {
    return toOutcome(readUpTo(handle_.number(), buffer));
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
    return toOutcome(readUpToAt(handle_.number(), position, buffer));
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
