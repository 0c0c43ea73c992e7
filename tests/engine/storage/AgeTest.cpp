#include <engine/storage/Age.h>
#include <platform/kernel/Clock.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>

namespace {

using qrv::isOlder;

constexpr std::int64_t nsPerSecond = 1'000'000'000;

TEST(Age, IsThatOfTheLastWrite) {
    const kernel::ScopedClock clock(1'700'000'000'000);
    const std::int64_t written = (1'700'000'000 - 3600) * nsPerSecond;
    EXPECT_FALSE(isOlder(written, std::chrono::hours(1)));
    EXPECT_TRUE(isOlder(written - nsPerSecond, std::chrono::hours(1)));
    EXPECT_FALSE(isOlder(written + 10'000 * nsPerSecond, std::chrono::hours(1)));
}

// Symptom: with a clock of 2262 or later, and for a file from before 1678, ages were wrong by
// centuries, so that gc could drop what was new.
// Cause: the distance of two times does not fit into nanoseconds.
TEST(Age, IsRightInTheDistantPastAndFuture) {
    constexpr std::int64_t year2300 = 10'413'792'000'000;
    const kernel::ScopedClock clock(year2300);
    EXPECT_TRUE(isOlder(1'700'000'000 * nsPerSecond, std::chrono::hours(1)));
    EXPECT_TRUE(isOlder(std::numeric_limits<std::int64_t>::min(), std::chrono::hours(1)));
    // A file of that time: as exactly as it can be told, it is from 2262.
    EXPECT_FALSE(isOlder(std::numeric_limits<std::int64_t>::max(), std::chrono::hours(1)));
    EXPECT_FALSE(isOlder(9'223'372'035 * nsPerSecond + 999'999'999, std::chrono::hours(1)));
}

}  // namespace
