#pragma once

#include <cstddef>

namespace qrv_bench {

/// Follows how many bytes of the heap `operator new` has given out since this object was made, in
/// all libraries of the program: now, and at most. One at a time, in one thread.
class AllocationCount {
public:
    AllocationCount();
    std::size_t liveBytes() const;
    std::size_t peakBytes() const;

private:
    std::size_t before_;
};

}  // namespace qrv_bench
