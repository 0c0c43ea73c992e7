#include <sys/CallsInternal.h>
#include <sys/Handle.h>

#include <cerrno>

namespace sys {

Handle::~Handle() {
    const int errorNumber = errno;
    // Whoever wants to know how it went has called it.
    static_cast<void>(close());
    errno = errorNumber;
}

std::error_code Handle::close() {
    const int number = std::exchange(number_, -1);
    return number >= 0 && calls::close(number) < 0 ? calls::lastError() : std::error_code();
}

}  // namespace sys
