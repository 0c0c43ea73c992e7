#include <engine/storage/Age.h>
#include <platform/kernel/Clock.h>

#include <limits>

namespace qrv {

namespace {

/// Later times are given as the last one that can be counted in nanoseconds, or just before it.
constexpr std::int64_t lastTimeNs =
    std::numeric_limits<std::int64_t>::max() - std::int64_t{10} * 1000 * 1000 * 1000;
constexpr std::int64_t nsPerMillisecond = 1000000;

}  // namespace

bool isOlder(std::int64_t modifiedNs, std::chrono::milliseconds age) {
    if (modifiedNs >= lastTimeNs)
        return false;
    // In milliseconds even the distance of the two most distant times can be told.
    return kernel::now() - modifiedNs / nsPerMillisecond > age.count();
}

}  // namespace qrv
