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

/// What is no regular file stays one that nobody waits for.
OpenedFile openAnything(const OdString& path, int flags, mode_t mode, mode_t& kind) {
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
    if (S_ISDIR(status.st_mode))
        return notOpened(EISDIR);
    kind = status.st_mode & S_IFMT;
    return {.descriptor = std::move(descriptor), .sizeBytes = status.st_size};
}

}  // namespace

OpenedFile openRegularFile(const OdString& path, int flags, mode_t mode) {
    mode_t kind = 0;
    OpenedFile opened = openAnything(path, flags, mode, kind);
    if (opened.descriptor.isOpen() && kind != S_IFREG)
        return notOpened(notARegularFile);
    return opened;
}

OpenedFile openNoFolder(const OdString& path, int flags, mode_t mode) {
    mode_t kind = 0;
    OpenedFile opened = openAnything(path, flags, mode, kind);
    // Only the opening must not wait: what is written later shall not be lost because a pipe is
    // full for the moment.
    if (opened.descriptor.isOpen() && kind != S_IFREG &&
        fcntl(opened.descriptor.get(), F_SETFL, flags) < 0)
        return notOpened(errno);
    return opened;
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
