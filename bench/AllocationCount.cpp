#include <bench/AllocationCount.h>

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

std::size_t live = 0;
std::size_t peak = 0;

}  // namespace

// What the allocator really spends: the usable size and its word of bookkeeping.
void* operator new(std::size_t size) {
    void* const memory = std::malloc(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    live += malloc_usable_size(memory) + sizeof(std::size_t);
    peak = std::max(peak, live);
    return memory;
}

void operator delete(void* memory) noexcept {
    if (memory != nullptr)
        live -= malloc_usable_size(memory) + sizeof(std::size_t);
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}

namespace qrv_bench {

AllocationCount::AllocationCount() : before_(live) {
    peak = live;
}

std::size_t AllocationCount::liveBytes() const {
    return live - before_;
}

std::size_t AllocationCount::peakBytes() const {
    return peak - before_;
}

}  // namespace qrv_bench
