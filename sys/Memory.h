#pragma once

#include <cstdint>
#include <optional>

namespace sys {

/// Lets the C library ask the system for memory in large steps, once, when the process begins.
/// Otherwise it does so page by page in each thread, thousands of times for the files of a large
/// repository. What is not used takes none.
void takeMemoryInLargeSteps();

/// How many bytes this process can take now without driving the machine or its container to their
/// limits. Nothing when the system does not say. The system grants more than it has, and ends
/// processes when they use it: so whoever needs much asks first.
std::optional<std::int64_t> memoryAtHand();

/// For tests: while one lives, `memoryAtHand` answers this.
class ScopedMemoryAtHand {
public:
    explicit ScopedMemoryAtHand(std::int64_t bytes);
    ScopedMemoryAtHand(const ScopedMemoryAtHand&) = delete;
    ScopedMemoryAtHand& operator=(const ScopedMemoryAtHand&) = delete;
    ~ScopedMemoryAtHand();
};

}  // namespace sys
