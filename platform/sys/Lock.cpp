#include <platform/sys/CallsInternal.h>
#include <platform/sys/Lock.h>

#include <fcntl.h>

namespace sys {

Outcome<Lock> Lock::tryTake(const std::string& path) {
    if (path.find('\0') != std::string::npos)
        return std::make_error_code(std::errc::no_such_file_or_directory);
    // A pipe in the file's place must not make anybody wait.
    constexpr int flags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    Handle handle = calls::openAt(AT_FDCWD, path.c_str(), flags, 0666);
    if (!handle.isOpen() || calls::lock(handle.number()) < 0)
        return calls::lastError();
    return Lock(std::move(handle));
}

}  // namespace sys
