#include <platform/sys/Memory.h>

#include <malloc.h>

namespace sys {

namespace {

constexpr int stepBytes = 32 << 20;

}  // namespace

void takeMemoryInLargeSteps() {
    // A library that does not know the parameter goes on as it did. No other thread runs yet.
    static_cast<void>(::mallopt(M_TOP_PAD, stepBytes));  // NOLINT(concurrency-mt-unsafe)
}

}  // namespace sys
