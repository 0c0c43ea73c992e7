#pragma once

namespace common {

/// Whether the platform is our own, whose text files join the lines that they are given by line
/// feeds and hold plain UTF-8. A host's own may end lines as it likes and decode what it reads, so
/// that its text files are given one line, and read as a whole.
#ifdef QRV_BUNDLED_PLATFORM
inline constexpr bool isPlatformBundled = true;
#else
inline constexpr bool isPlatformBundled = false;
#endif

}  // namespace common
