#include <platform/ut/RegularFileInternal.h>
#include <platform/ut/SystemPathInternal.h>
#include <sys/CallsInternal.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <optional>
#include <string>
#include <utility>

namespace ut {

namespace calls = sys::calls;

namespace {

OpenedFile notOpened(int errorNumber) {
    return {.handle = sys::Handle(), .errorNumber = errorNumber};
}

/// What is no regular file stays one that nobody waits for.
OpenedFile openAnything(const OdString& path, int flags, mode_t mode, mode_t& kind) {
    const std::optional<std::string> systemPath = toSystemPath(path);
    if (!systemPath)
        return notOpened(errno);
    // O_NONBLOCK changes nothing for a regular file; a pipe without a writer would hold us up for
    // ever.
    sys::Handle handle =
        calls::openAt(AT_FDCWD, systemPath->c_str(), flags | O_NONBLOCK | O_NOCTTY, mode);
    if (!handle.isOpen())
        return notOpened(errno);
    struct stat status = {};
    if (calls::status(handle.number(), status) < 0)
        return notOpened(errno);
    if (S_ISDIR(status.st_mode))
        return notOpened(EISDIR);
    kind = status.st_mode & S_IFMT;
    return {.handle = std::move(handle), .sizeBytes = status.st_size};
}

}  // namespace

OpenedFile openRegularFile(const OdString& path, int flags, mode_t mode) {
    mode_t kind = 0;
    OpenedFile opened = openAnything(path, flags, mode, kind);
    if (opened.handle.isOpen() && kind != S_IFREG)
        return notOpened(notARegularFile);
    return opened;
}

OpenedFile openNoFolder(const OdString& path, int flags, mode_t mode) {
    mode_t kind = 0;
    OpenedFile opened = openAnything(path, flags, mode, kind);
    // Only the opening must not wait: what is written later shall not be lost because a pipe is
    // full for the moment.
    if (opened.handle.isOpen() && kind != S_IFREG &&
        fcntl(opened.handle.number(), F_SETFL, flags) < 0)
        return notOpened(errno);
    return opened;
}

}  // namespace ut
