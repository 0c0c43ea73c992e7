#include <platform/ut/DateTime.h>

#include <limits>

namespace ut {

namespace {

constexpr std::int64_t ticksPerSecond = 10'000'000;
constexpr std::int64_t nanosecondsPerTick = 100;
constexpr std::int64_t unixEpochSeconds = 11'644'473'600;  // 1970 counted from 1601
constexpr std::int64_t firstTick = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t lastTick = std::numeric_limits<std::int64_t>::max();

}  // namespace

DateTime DateTime::fromUnixTime(std::int64_t seconds, std::int64_t nanoseconds) {
    if (seconds > lastTick / ticksPerSecond - unixEpochSeconds)
        return DateTime(lastTick);
    if (seconds < firstTick / ticksPerSecond - unixEpochSeconds - 1)
        return DateTime(firstTick);
    // The whole seconds are cut towards zero, so that the very first second of the range, which
    // begins before the first tick, needs no larger type.
    const std::int64_t secondsSince1601 = seconds + unixEpochSeconds;
    const std::int64_t borrowed = secondsSince1601 < 0 ? 1 : 0;
    const std::int64_t whole = (secondsSince1601 + borrowed) * ticksPerSecond;
    const std::int64_t rest = nanoseconds / nanosecondsPerTick - borrowed * ticksPerSecond;
    if (rest >= 0)
        return DateTime(rest > lastTick - whole ? lastTick : whole + rest);
    return DateTime(rest < firstTick - whole ? firstTick : whole + rest);
}

}  // namespace ut
