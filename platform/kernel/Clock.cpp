#include <platform/kernel/Clock.h>

#include <chrono>

namespace kernel {

namespace {

thread_local const std::int64_t* innermostStop = nullptr;

}  // namespace

std::int64_t now() {
    if (innermostStop != nullptr)
        return *innermostStop;
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::floor<std::chrono::milliseconds>(sinceEpoch).count();
}

ScopedClock::ScopedClock(std::int64_t milliseconds)
    : outer_(innermostStop), milliseconds_(milliseconds) {
    innermostStop = &milliseconds_;
}

ScopedClock::~ScopedClock() {
    innermostStop = outer_;
}

}  // namespace kernel
