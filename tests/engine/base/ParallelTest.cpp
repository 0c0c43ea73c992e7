#include <engine/base/Parallel.h>

#include <gmock/gmock.h>

#include <atomic>
#include <cstddef>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

TEST(Parallel, CallsOnceForEachNumber) {
    for (const std::size_t count : {0, 1, 2, 1000}) {
        std::vector<int> calls(count);
        qrv::inParallel(count, [&](std::size_t number) { ++calls[number]; });
        EXPECT_EQ(calls, std::vector<int>(count, 1));
    }
}

TEST(Parallel, RunsCallsSideBySide) {
    if (qrv::parallelCalls() < 2)
        GTEST_SKIP() << "The machine has one core";
    std::atomic<int> there = 0;
    // Neither ends before the other has begun.
    qrv::inParallel(2, [&](std::size_t) {
        ++there;
        while (there < 2)
            std::this_thread::yield();
    });
    EXPECT_EQ(there, 2);
}

TEST(Parallel, PassesAnExceptionOnWhenNobodyIsAtWorkAnyMore) {
    std::atomic<int> begun = 0;
    std::atomic<int> ended = 0;
    EXPECT_THROW(qrv::inParallel(1'000'000,
                                 [&](std::size_t number) {
                                     ++begun;
                                     if (number == 10)
                                         throw std::runtime_error("no");
                                     ++ended;
                                 }),
                 std::runtime_error);
    EXPECT_EQ(begun, ended + 1);
    EXPECT_LT(begun, 1'000'000);
}

}  // namespace
