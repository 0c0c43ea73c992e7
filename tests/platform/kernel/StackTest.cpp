#include <platform/kernel/Stack.h>

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>

#include <cstddef>
#include <cstdlib>
#include <memory>

namespace {

/// What is left in a new thread with a stack of that size. The stack is our own, since the system
/// may give a thread the larger one of a thread that has ended.
std::size_t leftInThreadOf(std::size_t sizeBytes) {
    const std::unique_ptr<void, decltype(&std::free)> stack(std::aligned_alloc(65536, sizeBytes),
                                                            &std::free);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    EXPECT_EQ(pthread_attr_setstack(&attributes, stack.get(), sizeBytes), 0);
    std::size_t left = 0;
    const auto ask = [](void* answer) -> void* {
        *static_cast<std::size_t*>(answer) = kernel::stackLeftBytes();
        return nullptr;
    };
    pthread_t thread{};
    EXPECT_EQ(pthread_create(&thread, &attributes, ask, &left), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    return left;
}

[[gnu::noinline]] std::size_t leftBelow(volatile char* block, std::size_t sizeBytes) {
    block[sizeBytes - 1] = 1;
    return kernel::stackLeftBytes();
}

[[gnu::noinline]] std::size_t leftBelowSixtyFourKibibytes() {
    volatile char block[64 * 1024];
    return leftBelow(block, sizeof block);
}

}  // namespace

TEST(Stack, TellsWhatIsLeftInAThread) {
    for (const std::size_t size : {std::size_t{512} * 1024, std::size_t{2} * 1024 * 1024}) {
        const std::size_t left = leftInThreadOf(size);
        EXPECT_LT(left, size);
        EXPECT_GT(left, size - 64 * 1024);
    }
}

TEST(Stack, TellsNoMoreInTheMainThreadThanItMayGrowTo) {
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_STACK, &limit), 0);
    EXPECT_GT(kernel::stackLeftBytes(), 64U * 1024);
    if (limit.rlim_cur != RLIM_INFINITY) {
        EXPECT_LE(kernel::stackLeftBytes(), limit.rlim_cur);
    }
}

TEST(Stack, CountsWhatIsInUse) {
    EXPECT_GE(kernel::stackLeftBytes(), leftBelowSixtyFourKibibytes() + 64 * 1024);
}
