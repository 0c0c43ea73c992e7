#pragma once

#include <platform/kernel/Export.h>
#include <platform/kernel/OdString.h>

#include <compare>
#include <cstdint>

/// A point in time as a day number and the milliseconds past that day's midnight. Day 2440588 is
/// 1970-01-01 of the Gregorian calendar. A stamp knows no time zone: whether it is universal or
/// local time is decided by who makes it.
class QRV_PLATFORM_EXPORT OdTimeStamp {
public:
    /// What a new stamp holds.
    enum InitialValue {
        kInitZero,           ///< packed value 0
        kInitLocalTime,      ///< now, in the local time zone
        kInitUniversalTime,  ///< now, in universal time
    };

    /// The same as `kInitZero`.
    OdTimeStamp() = default;
    /// 0, or the present time of `kernel::now`.
    OdTimeStamp(InitialValue initialValue);

    /// Milliseconds since 1970-01-01T00:00:00Z. Every value that was set comes back. A stamp so far
    /// away that its milliseconds do not fit (only a difference can be) gives the nearest end.
    std::int64_t packedValue() const;
    /// Sets the stamp to so many milliseconds since 1970-01-01T00:00:00Z, also before.
    void setPackedValue(std::int64_t milliseconds);

    /// The day number; of a span the days, counted from 0.
    std::int64_t julianDay() const { return day_; }
    /// In [0, 86400000).
    std::int32_t msecsPastMidnight() const { return milliseconds_; }

    /// Makes this stamp the span since `other`: its days count from 0, and the milliseconds are
    /// those beyond whole days. A negative span has a negative day and milliseconds that count
    /// forward.
    OdTimeStamp& operator-=(const OdTimeStamp& other);

    friend bool operator==(const OdTimeStamp&, const OdTimeStamp&) = default;
    friend std::strong_ordering operator<=>(const OdTimeStamp&, const OdTimeStamp&) = default;

    /// The stamp in the given form, with English names, whatever the locale. Knows %b %d %#d %Y %m
    /// %H %#H %M %#M %S %%; "#" leaves out leading zeros. Anything else is written as it stands.
    OdString strftime(const OdString& format) const;
    /// "Tue Mar  5 14:07:09 2024", without a line break.
    OdString ctime() const;

private:
    std::int64_t day_ = 2440588;
    std::int32_t milliseconds_ = 0;
};
