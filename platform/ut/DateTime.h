#pragma once

#include <platform/kernel/Export.h>

#include <cstdint>

namespace ut {

/// A point in time of the file system, in ticks of 100 ns since 1601-01-01T00:00:00Z. A default one
/// holds 0 and stands for no time.
class QRV_PLATFORM_EXPORT DateTime {
public:
    DateTime() = default;
    /// From ticks.
    explicit DateTime(std::int64_t ticks) : ticks_(ticks) {}
    /// From seconds since 1970-01-01T00:00:00Z and the nanoseconds beyond them, in [0, 999999999],
    /// which are cut to whole ticks. A time that does not fit becomes the nearest end.
    static DateTime fromUnixTime(std::int64_t seconds, std::int64_t nanoseconds);

    /// The ticks since 1601; 0 stands for no time.
    std::int64_t getTicks() const { return ticks_; }

    friend bool operator==(const DateTime&, const DateTime&) = default;

private:
    std::int64_t ticks_ = 0;
};

}  // namespace ut
