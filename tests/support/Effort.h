#pragma once

#include <cstddef>
#include <string_view>

namespace qrv_test {

/// Whether address and memory are watched, so that each step takes several times as long.
#ifdef __SANITIZE_ADDRESS__
inline constexpr bool isSanitized = true;
#else
inline constexpr bool isSanitized = false;
#endif

/// Whether a test is to try all that it can instead of a part: QRV_EXHAUSTIVE is in the
/// environment.
bool isExhaustive();

/// Prints how much of something a test has tried, for the sums of scripts/count_tried.py.
void tellTried(std::size_t count, std::string_view what);

}  // namespace qrv_test
