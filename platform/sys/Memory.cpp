#include <platform/sys/Memory.h>

#include <malloc.h>

namespace sys {

namespace {

constexpr int stepBytes = 32 << 20;

}  // namespace

void takeMemoryInLargeSteps() {
    // A library that does not know the parameter goes on as it did.
    static_cast<void>(::mallopt(M_TOP_PAD, stepBytes));
}

}  // namespace sys
