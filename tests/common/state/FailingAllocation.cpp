#include <tests/common/state/FailingAllocation.h>

#include <cstdlib>
#include <new>

namespace {

// How many allocations are still to succeed before one fails; negative while none is to fail.
constinit long remaining = -1;
constinit bool fired = false;
constinit bool isForGood = false;

}  // namespace

namespace qrv_test {

FailingAllocation::FailingAllocation(long nth, Which which) {
    fired = false;
    isForGood = which == Which::allThatFollow;
    remaining = nth - 1;
}

FailingAllocation::~FailingAllocation() {
    isForGood = false;
    remaining = -1;
}

bool FailingAllocation::hasFired() const {
    return fired;
}

}  // namespace qrv_test

// Stands in for the process's own: the libraries under test use it as well.
void* operator new(std::size_t size) {
    if (remaining >= 0 && remaining-- == 0) {
        fired = true;
        if (isForGood)
            remaining = 0;
        throw std::bad_alloc();
    }
    if (void* memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
