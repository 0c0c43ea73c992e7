#include <platform/kernel/Stack.h>

#include <pthread.h>

namespace kernel {

std::size_t stackLeftBytes() {
    std::size_t left = std::size_t{64} * 1024;
#ifdef __GLIBC__
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0)
        return left;
    void* lowest = nullptr;
    std::size_t size = 0;
    std::size_t guardSize = 0;
    if (pthread_attr_getstack(&attributes, &lowest, &size) == 0 &&
        pthread_attr_getguardsize(&attributes, &guardSize) == 0) {
        const char here = 0;
        const char* const end = static_cast<const char*>(lowest) + guardSize;
        // Not so on a stack of the program's own making, of which the system knows nothing.
        if (&here > end && &here <= end + size)
            left = static_cast<std::size_t>(&here - end);
    }
    pthread_attr_destroy(&attributes);
#endif
    return left;
}

}  // namespace kernel
