#include <platform/ut/RegularFileInternal.h>
#include <platform/ut/SystemCallsInternal.h>
#include <platform/ut/SystemPathInternal.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <optional>
#include <string>
#include <utility>

namespace ut {

namespace {

OpenedFile notOpened(int errorNumber) {
    return {.descriptor = Descriptor(), .errorNumber = errorNumber};
}

}  // namespace

OpenedFile openRegularFile(const OdString& path, int flags, mode_t mode) {
    const std::optional<std::string> systemPath = toSystemPath(path);
    if (!systemPath)
        return notOpened(errno);
    // O_NONBLOCK changes nothing for a regular file; a pipe without a writer would hold us up for
    // ever.
    Descriptor descriptor(
        calls::openAt(AT_FDCWD, *systemPath, flags | O_NONBLOCK | O_NOCTTY, mode));
    if (!descriptor.isOpen())
        return notOpened(errno);
    struct stat status = {};
    if (calls::fstat(descriptor.get(), status) < 0)
        return notOpened(errno);
    if (!S_ISREG(status.st_mode))
        return notOpened(S_ISDIR(status.st_mode) ? EISDIR : notARegularFile);
    return {.descriptor = std::move(descriptor), .sizeBytes = status.st_size};
}

ReadBytes readUpTo(int descriptor, void* buffer, std::size_t size) {
    ReadBytes result;
    while (result.count < size) {
        const ssize_t count =
            calls::read(descriptor, static_cast<char*>(buffer) + result.count, size - result.count);
        if (count < 0)
            result.errorNumber = errno;
        if (count <= 0)
            return result;
        result.count += static_cast<std::size_t>(count);
    }
    return result;
}

}  // namespace ut
