#include <platform/kernel/Clock.h>
#include <platform/kernel/OdTimeStamp.h>

#include <time.h>

#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

namespace {

constexpr std::int64_t millisecondsPerSecond = 1000;
constexpr std::int64_t millisecondsPerDay = 86400000;
constexpr std::int64_t dayOf1970 = 2440588;

struct Quotient {
    std::int64_t whole;
    std::int64_t rest;  ///< in [0, divisor)
};

Quotient divideDownwards(std::int64_t number, std::int64_t divisor) {
    const std::int64_t rest = number % divisor;
    if (rest < 0)
        return {number / divisor - 1, rest + divisor};
    return {number / divisor, rest};
}

/// The nearest end of the range where the difference does not fit.
std::int64_t subtractCut(std::int64_t left, std::int64_t right) {
    using Limits = std::numeric_limits<std::int64_t>;
    if (right < 0 && left > Limits::max() + right)
        return Limits::max();
    if (right > 0 && left < Limits::min() + right)
        return Limits::min();
    return left - right;
}

struct Date {
    std::int64_t year;
    std::int64_t month;  ///< in [1, 12]
    std::int64_t day;    ///< in [1, 31]
};

/// The date of a day number in the Gregorian calendar, extended to all times. Counts in years that
/// begin in March, so that the leap day is a year's last day, and in cycles of 400 years, which all
/// have the same number of days.
Date dateOf(std::int64_t julianDay) {
    constexpr std::int64_t firstOfMarchOfYear0 = 1721120;
    constexpr std::int64_t daysPerCycle = 146097;
    // Two steps, because a day number near the end of the range leaves no room to subtract first.
    const Quotient coarse = divideDownwards(julianDay, daysPerCycle);
    const Quotient fine = divideDownwards(coarse.rest - firstOfMarchOfYear0, daysPerCycle);
    const std::int64_t dayOfCycle = fine.rest;
    const std::int64_t yearOfCycle =
        (dayOfCycle - dayOfCycle / 1460 + dayOfCycle / 36524 - dayOfCycle / 146096) / 365;
    const std::int64_t dayOfYear =
        dayOfCycle - (365 * yearOfCycle + yearOfCycle / 4 - yearOfCycle / 100);
    const std::int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
    const std::int64_t day = dayOfYear - (153 * monthFromMarch + 2) / 5 + 1;
    const std::int64_t month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    const std::int64_t year = (coarse.whole + fine.whole) * 400 + yearOfCycle;
    return {month <= 2 ? year + 1 : year, month, day};
}

std::wstring_view monthName(std::int64_t month) {
    constexpr std::array<std::wstring_view, 12> names = {L"Jan", L"Feb", L"Mar", L"Apr",
                                                         L"May", L"Jun", L"Jul", L"Aug",
                                                         L"Sep", L"Oct", L"Nov", L"Dec"};
    return names[static_cast<std::size_t>(month - 1)];
}

std::wstring_view weekdayName(std::int64_t julianDay) {
    constexpr std::array<std::wstring_view, 7> names = {L"Mon", L"Tue", L"Wed", L"Thu",
                                                        L"Fri", L"Sat", L"Sun"};
    return names[static_cast<std::size_t>(divideDownwards(julianDay, 7).rest)];
}

std::wstring decimal(std::int64_t number) {
    return kernel::FormatArgument(number).digits();
}

std::wstring padded(std::int64_t number, std::size_t width, wchar_t filling) {
    const std::wstring digits = decimal(number);
    return std::wstring(width - std::min(width, digits.size()), filling) + digits;
}

std::wstring twoDigits(std::int64_t number) {
    return padded(number, 2, L'0');
}

/// Four digits at least. The year before year 1 is year 0, the one before that -0001.
std::wstring yearDigits(std::int64_t year) {
    return year < 0 ? L'-' + padded(-year, 4, L'0') : padded(year, 4, L'0');
}

/// The parts of a stamp that a form can show.
struct Moment {
    Date date;
    std::int64_t hour;
    std::int64_t minute;
    std::int64_t second;
};

Moment momentOf(const OdTimeStamp& stamp) {
    const std::int64_t seconds = stamp.msecsPastMidnight() / millisecondsPerSecond;
    return {dateOf(stamp.julianDay()), seconds / 3600, seconds / 60 % 60, seconds % 60};
}

struct Token {
    std::wstring_view pattern;
    std::wstring (*write)(const Moment&);
};

constexpr std::array<Token, 11> tokens = {{
    {L"%b", [](const Moment& moment) { return std::wstring(monthName(moment.date.month)); }},
    {L"%d", [](const Moment& moment) { return twoDigits(moment.date.day); }},
    {L"%#d", [](const Moment& moment) { return decimal(moment.date.day); }},
    {L"%Y", [](const Moment& moment) { return yearDigits(moment.date.year); }},
    {L"%m", [](const Moment& moment) { return twoDigits(moment.date.month); }},
    {L"%H", [](const Moment& moment) { return twoDigits(moment.hour); }},
    {L"%#H", [](const Moment& moment) { return decimal(moment.hour); }},
    {L"%M", [](const Moment& moment) { return twoDigits(moment.minute); }},
    {L"%#M", [](const Moment& moment) { return decimal(moment.minute); }},
    {L"%S", [](const Moment& moment) { return twoDigits(moment.second); }},
    {L"%%", [](const Moment&) { return std::wstring(L"%"); }},
}};

/// The token that the text begins with, or null.
const Token* tokenAtBegin(std::wstring_view text) {
    const auto found = std::find_if(tokens.begin(), tokens.end(), [&](const Token& token) {
        return text.starts_with(token.pattern);
    });
    return found == tokens.end() ? nullptr : &*found;
}

std::wstring write(const Moment& moment, std::wstring_view form) {
    std::wstring text;
    while (!form.empty()) {
        if (const Token* token = tokenAtBegin(form)) {
            text += token->write(moment);
            form.remove_prefix(token->pattern.size());
            continue;
        }
        text += form.front();
        form.remove_prefix(1);
    }
    return text;
}

/// How far local time is ahead of universal time at a universal time; 0 where the system cannot
/// tell.
std::int64_t localOffsetMilliseconds(std::int64_t universalMilliseconds) {
    const auto seconds =
        static_cast<time_t>(divideDownwards(universalMilliseconds, millisecondsPerSecond).whole);
    // `localtime_r`, unlike `localtime`, need not look at a changed time zone by itself.
    ::tzset();
    tm local{};
    if (::localtime_r(&seconds, &local) == nullptr)
        return 0;
    return local.tm_gmtoff * millisecondsPerSecond;
}

}  // namespace

OdTimeStamp::OdTimeStamp(InitialValue initialValue) {
    if (initialValue == kInitZero)
        return;
    const std::int64_t now = kernel::now();
    setPackedValue(now);
    if (initialValue == kInitUniversalTime)
        return;
    // Added here and not to `now`, which may be the last value of its type.
    const Quotient local =
        divideDownwards(milliseconds_ + localOffsetMilliseconds(now), millisecondsPerDay);
    day_ += local.whole;
    milliseconds_ = static_cast<std::int32_t>(local.rest);
}

std::int64_t OdTimeStamp::packedValue() const {
    using Limits = std::numeric_limits<std::int64_t>;
    OdTimeStamp first;
    first.setPackedValue(Limits::min());
    OdTimeStamp last;
    last.setPackedValue(Limits::max());
    if (*this <= first)
        return Limits::min();
    if (*this >= last)
        return Limits::max();
    // Unsigned, because the midnight of the very first day lies outside the range; the sum does
    // not.
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(day_ - dayOf1970) *
                                         static_cast<std::uint64_t>(millisecondsPerDay) +
                                     static_cast<std::uint64_t>(milliseconds_));
}

void OdTimeStamp::setPackedValue(std::int64_t milliseconds) {
    const Quotient days = divideDownwards(milliseconds, millisecondsPerDay);
    day_ = days.whole + dayOf1970;
    milliseconds_ = static_cast<std::int32_t>(days.rest);
}

OdTimeStamp& OdTimeStamp::operator-=(const OdTimeStamp& other) {
    const Quotient difference =
        divideDownwards(milliseconds_ - other.milliseconds_, millisecondsPerDay);
    day_ = subtractCut(subtractCut(day_, -difference.whole), other.day_);
    milliseconds_ = static_cast<std::int32_t>(difference.rest);
    return *this;
}

OdString OdTimeStamp::strftime(const OdString& format) const {
    return OdString(write(momentOf(*this), format.toWide()));
}

OdString OdTimeStamp::ctime() const {
    const Moment moment = momentOf(*this);
    std::wstring text(weekdayName(day_));
    text += write(moment, L" %b ");
    text += padded(moment.date.day, 2, L' ');
    text += write(moment, L" %H:%M:%S %Y");
    return OdString(std::move(text));
}
