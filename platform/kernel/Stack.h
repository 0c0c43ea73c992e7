#pragma once

#include <platform/kernel/Export.h>

#include <cstddef>

namespace kernel {

/// How many bytes the calling thread's stack can still grow by; a cautious guess where the system
/// does not tell. Asking may take the time of opening a file.
QRV_PLATFORM_EXPORT std::size_t stackLeftBytes();

}  // namespace kernel
