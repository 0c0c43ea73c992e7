#pragma once

#include <stdlib.h>
#include <time.h>

#include <optional>
#include <string>

namespace qrv_test {

/// Sets the process's time zone, in the form of the variable TZ, and puts the old one back.
class ScopedTimeZone {
public:
    explicit ScopedTimeZone(const char* zone) {
        if (const char* former = getenv("TZ"))
            former_ = former;
        setenv("TZ", zone, 1);
    }
    ScopedTimeZone(const ScopedTimeZone&) = delete;
    ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;
    ~ScopedTimeZone() {
        if (former_)
            setenv("TZ", former_->c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }

private:
    std::optional<std::string> former_;
};

}  // namespace qrv_test
