#include <platform/kernel/OdTimeStamp.h>

#include <gmock/gmock.h>

#include <limits>
#include <utility>

namespace {

constexpr std::int64_t day = 86400000;
constexpr std::int64_t aTuesday = 1709647629123;  // 2024-03-05T14:07:09.123Z

OdTimeStamp stamp(std::int64_t packed) {
    OdTimeStamp result;
    result.setPackedValue(packed);
    return result;
}

OdTimeStamp span(std::int64_t milliseconds) {
    OdTimeStamp result = stamp(milliseconds);
    result -= stamp(0);
    return result;
}

OdString dateOf(std::int64_t packed) {
    return stamp(packed).strftime(L"%Y-%m-%d");
}

/// Days since 1970-01-01, counted year by year and month by month: slow, and plain to see.
std::int64_t dayNumber(int year, int month, int dayOfMonth) {
    const auto isLeap = [](int y) { return y % 4 == 0 && (y % 100 != 0 || y % 400 == 0); };
    const int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    std::int64_t days = dayOfMonth - 1;
    for (int y = 1970; y < year; ++y)
        days += isLeap(y) ? 366 : 365;
    for (int y = year; y < 1970; ++y)
        days -= isLeap(y) ? 366 : 365;
    for (int m = 1; m < month; ++m)
        days += lengths[m - 1] + (m == 2 && isLeap(year) ? 1 : 0);
    return days;
}

TEST(OdTimeStampForm, KnowsTheseParts) {
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"%b", L"Mar"}, {L"%d", L"05"}, {L"%#d", L"5"},  {L"%Y", L"2024"},
        {L"%m", L"03"},  {L"%H", L"14"}, {L"%#H", L"14"}, {L"%M", L"07"},
        {L"%#M", L"7"},  {L"%S", L"09"}, {L"%%", L"%"},
    };
    for (const auto& [form, expected] : cases)
        EXPECT_EQ(stamp(aTuesday).strftime(form), OdString(expected)) << OdString(form).toNarrow();
}

TEST(OdTimeStampForm, WritesWholeForms) {
    EXPECT_EQ(stamp(aTuesday).strftime(L"%Y-%m-%dT%H:%M:%SZ"), OdString(L"2024-03-05T14:07:09Z"));
    EXPECT_EQ(stamp(aTuesday).strftime(L"%b %#d, %Y"), OdString(L"Mar 5, 2024"));
    EXPECT_EQ(stamp(aTuesday).strftime(L""), OdString());
}

TEST(OdTimeStampForm, LeavesOutLeadingZerosButNotZeroItself) {
    EXPECT_EQ(stamp(0).strftime(L"%H %#H %M %#M %S %d %#d"), OdString(L"00 0 00 0 00 01 1"));
    EXPECT_EQ(span(5 * 60000).strftime(L"%#M  "), OdString(L"5  "));
    EXPECT_EQ(span(59 * 60000 + 59999).strftime(L"%#M  "), OdString(L"59  "));
    EXPECT_EQ(span(3600000).strftime(L"%#H "), OdString(L"1 "));
    EXPECT_EQ(span(day - 1).strftime(L"%#H "), OdString(L"23 "));
    EXPECT_EQ(stamp(9 * day).strftime(L"%#d %d"), OdString(L"10 10"));
}

TEST(OdTimeStampForm, WritesWhatItDoesNotKnowAsItStands) {
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"plain \u00FC\U0001F600", L"plain \u00FC\U0001F600"},
        {L"%", L"%"},
        {L"%#", L"%#"},
        {L"%Y%", L"2024%"},
        {L"%%Y", L"%Y"},
        {L"%%%Y", L"%2024"},
        {L"%#%", L"%#%"},
        {L"%##d", L"%##d"},
        {L"%#%d", L"%#05"},
        {L"%#Y %#m %#S %#b", L"%#Y %#m %#S %#b"},
        {L"%y %j %A %a %B %p %I %c %x %X %z %Z %n %t",
         L"%y %j %A %a %B %p %I %c %x %X %z %Z %n %t"},
        {L"%h %e %D %F %T %s", L"%h %e %D %F %T %s"},
        {L"%EY %Od %5Y %-d", L"%EY %Od %5Y %-d"},
    };
    for (const auto& [form, expected] : cases)
        EXPECT_EQ(stamp(aTuesday).strftime(form), OdString(expected)) << OdString(form).toNarrow();
}

TEST(OdTimeStampForm, KeepsNuls) {
    EXPECT_EQ(stamp(0).strftime(OdString(std::wstring(L"\0%Y\0", 4))),
              OdString(std::wstring(L"\0"
                                    L"1970\0",
                                    6)));
}

TEST(OdTimeStampForm, NamesMonthsInEnglish) {
    const wchar_t* const names[] = {L"Jan", L"Feb", L"Mar", L"Apr", L"May", L"Jun",
                                    L"Jul", L"Aug", L"Sep", L"Oct", L"Nov", L"Dec"};
    for (int month = 1; month <= 12; ++month)
        EXPECT_EQ(stamp(dayNumber(2023, month, 15) * day).strftime(L"%b"),
                  OdString(names[month - 1]));
}

TEST(OdTimeStampForm, FindsDatesAtTheEdges) {
    const std::pair<std::int64_t, const wchar_t*> cases[] = {
        {0, L"1970-01-01"},
        {-1, L"1969-12-31"},
        {day - 1, L"1970-01-01"},
        {day, L"1970-01-02"},
        {951782400000, L"2000-02-29"},
        {951868800000, L"2000-03-01"},
        {4107456000000, L"2100-02-28"},
        {4107542400000, L"2100-03-01"},
        {1709164800000, L"2024-02-29"},
        {1735603200000, L"2024-12-31"},
        {1735689600000, L"2025-01-01"},
        {-11644473600000, L"1601-01-01"},
        {253402300799999, L"9999-12-31"},
        {253402300800000, L"10000-01-01"},
        {-62135596800000, L"0001-01-01"},
        {-62135596800001, L"0000-12-31"},
        {-62167219200000, L"0000-01-01"},
        {-62167219200001, L"-0001-12-31"},
        {std::numeric_limits<std::int64_t>::max(), L"292278994-08-17"},
        {std::numeric_limits<std::int64_t>::min(), L"-292275055-05-16"},
    };
    for (const auto& [packed, expected] : cases)
        EXPECT_EQ(dateOf(packed), OdString(expected)) << packed;
}

TEST(OdTimeStampForm, FindsEveryDateOfAWholeCycle) {
    const int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    std::int64_t number = dayNumber(1599, 1, 1);
    for (int year = 1599; year <= 2001; ++year)
        for (int month = 1; month <= 12; ++month) {
            const bool isLeap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
            const int length = lengths[month - 1] + (month == 2 && isLeap ? 1 : 0);
            for (int dayOfMonth = 1; dayOfMonth <= length; ++dayOfMonth, ++number) {
                const OdString expected = OdString::format(
                    L"%i/%ls%i/%i", year, month < 10 ? L"0" : L"", month, dayOfMonth);
                ASSERT_EQ(stamp(number * day).strftime(L"%Y/%m/%#d"), expected) << number;
            }
        }
    EXPECT_EQ(number, dayNumber(2002, 1, 1));
}

TEST(OdTimeStampForm, CountsDayZeroAsTheFirstJulianDay) {
    EXPECT_EQ(span(0).strftime(L"%Y-%m-%d"), OdString(L"-4713-11-24"));
}

TEST(OdTimeStampForm, WritesDaysAtTheEndsOfTheirRange) {
    OdTimeStamp high = span(std::numeric_limits<std::int64_t>::max());
    OdTimeStamp low = span(std::numeric_limits<std::int64_t>::min());
    for (int i = 0; i < 200; ++i) {
        const OdTimeStamp formerHigh = high;
        high -= low;
        low -= formerHigh;
    }

    EXPECT_EQ(high.strftime(L"%Y-%m-%d"), OdString(L"25252734927761842-06-20"));
    EXPECT_EQ(low.strftime(L"%Y-%m-%d"), OdString(L"-25252734927771267-04-30"));
}

TEST(OdTimeStampForm, WritesTheFormOfTheActivityLog) {
    const std::pair<std::int64_t, const wchar_t*> cases[] = {
        {aTuesday, L"Tue Mar  5 14:07:09 2024"},
        {0, L"Thu Jan  1 00:00:00 1970"},
        {-1, L"Wed Dec 31 23:59:59 1969"},
        {1710503999999, L"Fri Mar 15 11:59:59 2024"},
        {253402300799999, L"Fri Dec 31 23:59:59 9999"},
        {-62135596800000, L"Mon Jan  1 00:00:00 0001"},
    };
    for (const auto& [packed, expected] : cases)
        EXPECT_EQ(stamp(packed).ctime(), OdString(expected)) << packed;
}

TEST(OdTimeStampForm, NamesWeekdaysInEnglish) {
    const wchar_t* const names[] = {L"Thu", L"Fri", L"Sat", L"Sun", L"Mon", L"Tue", L"Wed", L"Thu"};
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(stamp(i * day).ctime().left(3), OdString(names[i])) << i;
    EXPECT_EQ(stamp(-4 * day).ctime().left(3), OdString(L"Sun"));
}

}  // namespace
