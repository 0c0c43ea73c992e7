#include <platform/ut/DateTime.h>

#include <gmock/gmock.h>

#include <limits>
#include <string>

namespace {

constexpr std::int64_t first = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t last = std::numeric_limits<std::int64_t>::max();

TEST(DateTime, HoldsNoTicksWhenDefaultMade) {
    EXPECT_EQ(ut::DateTime().getTicks(), 0);
    EXPECT_EQ(ut::DateTime(), ut::DateTime(0));
    EXPECT_FALSE(ut::DateTime() == ut::DateTime(1));
}

TEST(DateTime, CountsTicksFrom1601) {
    struct Case {
        std::int64_t seconds, nanoseconds, ticks;
    };
    const Case cases[] = {
        {0, 0, 116'444'736'000'000'000},
        {0, 99, 116'444'736'000'000'000},
        {0, 100, 116'444'736'000'000'001},
        {0, 999'999'999, 116'444'736'009'999'999},
        {-1, 999'999'999, 116'444'735'999'999'999},
        {-1, 0, 116'444'735'990'000'000},
        {1'700'000'000, 123'456'789, 133'444'736'001'234'567},
        {-11'644'473'600, 0, 0},
        {-11'644'473'600, 100, 1},
        {-11'644'473'601, 999'999'900, -1},
        {-11'644'473'602, 0, -20'000'000},
        {910'692'730'085, 477'580'700, last},
        {910'692'730'085, 477'580'600, last - 1},
        {-933'981'677'286, 522'419'200, first},
        {-933'981'677'286, 522'419'300, first + 1},
    };
    for (const Case& entry : cases)
        EXPECT_EQ(ut::DateTime::fromUnixTime(entry.seconds, entry.nanoseconds).getTicks(),
                  entry.ticks)
            << entry.seconds << " s " << entry.nanoseconds << " ns";
}

TEST(DateTime, TakesTheNearestEndForATimeThatDoesNotFit) {
    EXPECT_EQ(ut::DateTime::fromUnixTime(910'692'730'085, 477'580'800).getTicks(), last);
    EXPECT_EQ(ut::DateTime::fromUnixTime(910'692'730'086, 0).getTicks(), last);
    EXPECT_EQ(ut::DateTime::fromUnixTime(last, 999'999'999).getTicks(), last);
    EXPECT_EQ(ut::DateTime::fromUnixTime(-933'981'677'286, 522'419'100).getTicks(), first);
    EXPECT_EQ(ut::DateTime::fromUnixTime(-933'981'677'287, 999'999'999).getTicks(), first);
    EXPECT_EQ(ut::DateTime::fromUnixTime(first, 0).getTicks(), first);
}

}  // namespace
