#include <sys/CallsInternal.h>
#include <sys/Handle.h>
#include <sys/OpenByPath.h>

#include <fcntl.h>

#include <cerrno>

namespace sys {

int openWithoutWaiting(const char* path, int flags, int permissions) {
    Handle handle = calls::openAt(AT_FDCWD, path, flags | O_NONBLOCK | O_NOCTTY,
                                  static_cast<mode_t>(permissions));
    if (!handle.isOpen())
        return -1;
    struct stat status = {};
    if (calls::status(handle.number(), status) < 0)
        return -1;
    if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) {
        errno = EINVAL;
        return -1;
    }
    return handle.giveAway();
}

}  // namespace sys
