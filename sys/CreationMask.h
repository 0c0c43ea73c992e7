#pragma once

#include <cstdint>

namespace sys {

/// Sets which permissions new files and folders of this process do not get, whatever is asked for,
/// and gives what was set before. It holds for all threads.
std::uint32_t setCreationMask(std::uint32_t mask);

}  // namespace sys
