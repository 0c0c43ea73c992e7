#include <sys/Append.h>
#include <sys/CallsInternal.h>
#include <sys/TransferInternal.h>

#include <fcntl.h>

namespace sys {

std::error_code append(const Folder& folder, const std::string& relative,
                       std::span<const char> bytes) {
    const Outcome<NameInFolder> place = folder.openFolderOf(relative);
    if (!place)
        return place.error();
    const std::string path = place->folder.pathThroughHandle(place->name);
    constexpr int flags = O_WRONLY | O_APPEND | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW;
    Handle file = calls::openAt(AT_FDCWD, path.c_str(), flags);
    struct stat status = {};
    if (!file.isOpen() || calls::status(file.number(), status) < 0)
        return calls::lastError();
    if (!S_ISREG(status.st_mode))
        return std::make_error_code(std::errc::operation_not_supported);
    std::error_code error = writeAll(file.number(), bytes);
    if (!error && calls::flush(file.number()) < 0)
        error = calls::lastError();
    // Whoever tries again, or in another way, would add them twice.
    if (error)
        static_cast<void>(calls::truncate(file.number(), status.st_size));
    // It is on the disk by now, or not there any more.
    static_cast<void>(file.close());
    return error;
}

}  // namespace sys
