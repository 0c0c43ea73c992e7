#pragma once

#include <cstdint>

namespace qrv {

/// A time in nanoseconds since 1970 as the index notes it, in ticks of `ut::DateTime`.
std::int64_t toTicks(std::int64_t modifiedNs);

/// The coarsest step in which a file system counts its times: who looks at a file less than this
/// after it was changed may see it change again without another time.
constexpr std::int64_t coarsestTimeStepTicks = 20'000'000;

}  // namespace qrv
