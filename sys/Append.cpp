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
    if (const std::error_code error = writeAll(file.number(), bytes))
        return error;
    return calls::flush(file.number()) < 0 ? calls::lastError() : file.close();
}

}  // namespace sys
