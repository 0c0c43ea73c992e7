#pragma once

#include <platform/kernel/Export.h>

#include <cstdint>

namespace kernel {

/// The current time in milliseconds since 1970-01-01T00:00:00Z, or the time of the innermost
/// `ScopedClock` while there is one.
QRV_PLATFORM_EXPORT std::int64_t now();

/// Stops the clock for a test's scope: `now()` answers the given milliseconds until the object
/// ends, then what it answered before. Scopes nest; they belong to one thread.
class QRV_PLATFORM_EXPORT [[nodiscard]] ScopedClock {
public:
    /// Stops the clock at this time, counted since 1970-01-01T00:00:00Z.
    explicit ScopedClock(std::int64_t milliseconds);
    ScopedClock(const ScopedClock&) = delete;
    ScopedClock& operator=(const ScopedClock&) = delete;
    /// Gives back what was before.
    ~ScopedClock();

private:
    const std::int64_t* outer_;
    std::int64_t milliseconds_;
};

}  // namespace kernel
