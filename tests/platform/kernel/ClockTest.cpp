#include <platform/kernel/Clock.h>

#include <gmock/gmock.h>

#include <chrono>
#include <thread>

namespace {

std::int64_t systemMilliseconds() {
    return std::chrono::floor<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

TEST(Clock, TellsTheSystemsTimeInMilliseconds) {
    const std::int64_t before = systemMilliseconds();
    const std::int64_t now = kernel::now();
    const std::int64_t after = systemMilliseconds();

    EXPECT_LE(before, now);
    EXPECT_LE(now, after);
}

TEST(Clock, StandsStillInsideAScope) {
    const kernel::ScopedClock clock(1709647629000);

    EXPECT_EQ(kernel::now(), 1709647629000);
    std::this_thread::sleep_for(std::chrono::milliseconds(3));
    EXPECT_EQ(kernel::now(), 1709647629000);
}

TEST(Clock, GoesOnAfterTheScope) {
    { const kernel::ScopedClock clock(5); }

    EXPECT_GE(kernel::now(), systemMilliseconds() - 60000);
}

TEST(Clock, NestsScopes) {
    const kernel::ScopedClock outer(-7);
    {
        const kernel::ScopedClock middle(2);
        {
            const kernel::ScopedClock inner(3);
            EXPECT_EQ(kernel::now(), 3);
        }
        EXPECT_EQ(kernel::now(), 2);
    }
    EXPECT_EQ(kernel::now(), -7);
}

TEST(Clock, StopsForItsOwnThreadOnly) {
    const kernel::ScopedClock clock(5);
    std::int64_t seenByOther = 0;

    std::thread([&seenByOther] { seenByOther = kernel::now(); }).join();

    EXPECT_GE(seenByOther, systemMilliseconds() - 60000);
}

}  // namespace
