#include <sys/CreationMask.h>

#include <sys/stat.h>

namespace sys {

std::uint32_t setCreationMask(std::uint32_t mask) {
    return ::umask(mask);
}

}  // namespace sys
