#include <sys/BeneathInternal.h>
#include <sys/CallsInternal.h>
#include <sys/Lock.h>

#include <fcntl.h>
#include <sys/stat.h>

namespace sys {

Outcome<Lock> Lock::tryTake(const Folder& folder, const std::string& relative) {
    // A pipe in the file's place must not make anybody wait.
    constexpr int flags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    Handle handle = openBeneath(folder.number(), relative, flags, 0666);
    struct stat status = {};
    if (!handle.isOpen() || calls::status(handle.number(), status) < 0)
        return calls::lastError();
    if (!S_ISREG(status.st_mode))
        return std::make_error_code(std::errc::operation_not_supported);
    if (calls::lock(handle.number()) < 0)
        return calls::lastError();
    return Lock(std::move(handle));
}

}  // namespace sys
