#include <platform/kernel/Clock.h>
#include <platform/kernel/OdTimeStamp.h>
#include <tests/platform/kernel/ScopedTimeZone.h>

#include <gmock/gmock.h>

#include <limits>
#include <tuple>

namespace {

constexpr std::int64_t day = 86400000;
constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();

OdTimeStamp stamp(std::int64_t packed) {
    OdTimeStamp result;
    result.setPackedValue(packed);
    return result;
}

OdTimeStamp difference(std::int64_t later, std::int64_t earlier) {
    OdTimeStamp span = stamp(later);
    span -= stamp(earlier);
    return span;
}

OdTimeStamp localTimeIn(const char* zone, std::int64_t now) {
    const qrv_test::ScopedTimeZone timeZone(zone);
    const kernel::ScopedClock clock(now);
    return OdTimeStamp(OdTimeStamp::kInitLocalTime);
}

TEST(OdTimeStamp, BeginsAtTheEpoch) {
    for (const OdTimeStamp& zero : {OdTimeStamp(), OdTimeStamp(OdTimeStamp::kInitZero)}) {
        EXPECT_EQ(zero.packedValue(), 0);
        EXPECT_EQ(zero.julianDay(), 2440588);
        EXPECT_EQ(zero.msecsPastMidnight(), 0);
    }
}

TEST(OdTimeStamp, CountsDaysAndMilliseconds) {
    const std::tuple<std::int64_t, std::int64_t, std::int32_t> cases[] = {
        {1, 2440588, 1},
        {day - 1, 2440588, 86399999},
        {day, 2440589, 0},
        {-1, 2440587, 86399999},
        {-day, 2440587, 0},
        {-day - 1, 2440586, 86399999},
        {1709647629123, 2460375, 50829123},
        {largest, 2440588 + 106751991167, 25975807},
        {smallest, 2440588 - 106751991168, 60424192},
    };
    for (const auto& [packed, julianDay, milliseconds] : cases) {
        EXPECT_EQ(stamp(packed).julianDay(), julianDay) << packed;
        EXPECT_EQ(stamp(packed).msecsPastMidnight(), milliseconds) << packed;
    }
}

TEST(OdTimeStamp, KeepsEveryPackedValue) {
    for (const std::int64_t packed :
         {smallest, smallest + 1, smallest + day, -day - 1, -day, -1L, 0L, 1L, day - 1, day,
          1709647629123L, largest - day, largest - 1, largest})
        EXPECT_EQ(stamp(packed).packedValue(), packed);
    for (int shift = 0; shift < 63; ++shift)
        for (const std::int64_t near : {-1, 0, 1}) {
            const std::int64_t packed = (std::int64_t{1} << shift) + near;
            EXPECT_EQ(stamp(packed).packedValue(), packed);
            EXPECT_EQ(stamp(-packed).packedValue(), -packed);
        }
}

TEST(OdTimeStamp, ForgetsItsOldValueWhenSet) {
    OdTimeStamp time = stamp(largest);

    time.setPackedValue(5);

    EXPECT_EQ(time, stamp(5));
}

TEST(OdTimeStamp, OrdersByTime) {
    const std::int64_t ascending[] = {smallest, -day - 1, -day, -1, 0, 1, day - 1, day, largest};
    for (const std::int64_t left : ascending)
        for (const std::int64_t right : ascending) {
            EXPECT_EQ(stamp(left) < stamp(right), left < right) << left << " " << right;
            EXPECT_EQ(stamp(left) == stamp(right), left == right) << left << " " << right;
        }
}

TEST(OdTimeStamp, SubtractsToASpanOfDaysFromZero) {
    const std::tuple<std::int64_t, std::int64_t, std::int64_t, std::int32_t> cases[] = {
        {0, 0, 0, 0},
        {1709647629123, 1709647629123, 0, 0},
        {60000, 0, 0, 60000},
        // Over midnight, and less than a day.
        {day + 1, day - 1, 0, 2},
        {2 * day - 1, day - 1, 1, 0},
        {2 * day - 2, day - 1, 0, 86399999},
        {2 * day, day - 1, 1, 1},
        {10 * day + 5, -3 * day, 13, 5},
        // Backwards.
        {0, 1, -1, 86399999},
        {0, day, -1, 0},
        {0, day + 1, -2, 86399999},
        // From end to end.
        {largest, smallest, 213503982334, 51951615},
        {smallest, largest, -213503982335, 34448385},
    };
    for (const auto& [later, earlier, days, milliseconds] : cases) {
        const OdTimeStamp span = difference(later, earlier);
        EXPECT_EQ(span.julianDay(), days) << later << " - " << earlier;
        EXPECT_EQ(span.msecsPastMidnight(), milliseconds) << later << " - " << earlier;
    }
}

TEST(OdTimeStamp, SubtractsInPlace) {
    OdTimeStamp time = stamp(day);
    const OdTimeStamp& same = time;

    EXPECT_EQ(&(time -= same), &time);

    EXPECT_EQ(time.julianDay(), 0);
    EXPECT_EQ(time.msecsPastMidnight(), 0);
}

TEST(OdTimeStamp, PacksSpansThatDoNotFitAsTheNearestEnd) {
    EXPECT_EQ(difference(largest, smallest).packedValue(), largest);
    EXPECT_EQ(difference(smallest, largest).packedValue(), smallest);
    EXPECT_EQ(difference(0, 0).packedValue(), -2440588 * day);
}

TEST(OdTimeStamp, StaysInRangeUnderEndlessSubtraction) {
    OdTimeStamp high = difference(largest, smallest);
    OdTimeStamp low = difference(smallest, largest);
    for (int i = 0; i < 200; ++i) {
        const OdTimeStamp formerHigh = high;
        high -= low;
        low -= formerHigh;
    }

    EXPECT_EQ(high.julianDay(), largest);
    EXPECT_EQ(low.julianDay(), smallest);
}

TEST(OdTimeStamp, ReadsTheClockInUniversalTime) {
    const qrv_test::ScopedTimeZone timeZone("CET-1CEST,M3.5.0,M10.5.0/3");
    const kernel::ScopedClock clock(1709647629123);

    EXPECT_EQ(OdTimeStamp(OdTimeStamp::kInitUniversalTime).packedValue(), 1709647629123);
    EXPECT_EQ(OdTimeStamp(OdTimeStamp::kInitZero).packedValue(), 0);
}

TEST(OdTimeStamp, ReadsTheClockInLocalTime) {
    constexpr std::int64_t hour = 3600000;
    constexpr const char* berlin = "CET-1CEST,M3.5.0,M10.5.0/3";
    const std::tuple<const char*, std::int64_t, std::int64_t> cases[] = {
        {"UTC0", 1709647629123, 0},
        {berlin, 1709647629123, hour},
        {berlin, 1720000000000, 2 * hour},
        // The last millisecond before summer time, and the first one in it.
        {berlin, 1711846799999, hour},
        {berlin, 1711846800000, 2 * hour},
        {"EST5", 1709647629123, -5 * hour},
        {"IST-5:30", 1709647629123, 5 * hour + hour / 2},
        {"LMT0:00:17", 1709647629123, -17000},
        // Before the epoch, and over midnight both ways.
        {"EST5", -1, -5 * hour},
        {"EST5", 0, -5 * hour},
        {"XST-14", day - 1, 14 * hour},
    };
    for (const auto& [zone, now, offset] : cases)
        EXPECT_EQ(localTimeIn(zone, now).packedValue(), now + offset) << zone << " " << now;
}

TEST(OdTimeStamp, ReadsTheClockAtTheEndsOfTime) {
    EXPECT_EQ(localTimeIn("XST-14", largest).packedValue(), largest);
    EXPECT_EQ(localTimeIn("EST5", largest).packedValue(), largest - 5 * 3600000);
    EXPECT_EQ(localTimeIn("EST5", smallest).packedValue(), smallest);
    EXPECT_EQ(localTimeIn("XST-14", smallest).packedValue(), smallest + 14 * 3600000);
}

TEST(OdTimeStamp, NoticesAChangedTimeZone) {
    const OdTimeStamp east = localTimeIn("XST-3", 0);
    const OdTimeStamp west = localTimeIn("YST3", 0);

    EXPECT_EQ(east.packedValue(), 3 * 3600000);
    EXPECT_EQ(west.packedValue(), -3 * 3600000);
}

}  // namespace
