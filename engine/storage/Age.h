#pragma once

#include <chrono>
#include <cstdint>

namespace qrv {

/// A file that keeps what is stored once more counts as new again when it is older than this, far
/// less than the age at which unused versions are dropped.
constexpr std::chrono::hours ageToRefresh{24};

/// Whether nobody has written for that long to a file that was last written at `modifiedNs`
/// (nanoseconds since 1970). A time so late that it cannot be told exactly, from the year 2262 on,
/// says nothing: such a file is never old.
bool isOlder(std::int64_t modifiedNs, std::chrono::milliseconds age);

}  // namespace qrv
