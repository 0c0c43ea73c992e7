#include <sys/Memory.h>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

TEST(Memory, AtHandIsSomeAndNotMoreThanTheMachineHas) {
    const std::optional<std::int64_t> bytes = sys::memoryAtHand();
    ASSERT_TRUE(bytes);
    EXPECT_GT(*bytes, 1 << 20);
    EXPECT_LT(*bytes, std::int64_t{::sysconf(_SC_PHYS_PAGES)} * ::sysconf(_SC_PAGESIZE));
}

TEST(Memory, AtHandIsWhatTheLimitOfTheProcessLeaves) {
    // In a process of its own, for the limit cannot be taken back.
    const pid_t child = ::fork();
    if (child == 0) {
        const rlimit nothing = {.rlim_cur = 1 << 20, .rlim_max = 1 << 20};
        ::setrlimit(RLIMIT_AS, &nothing);
        ::_exit(sys::memoryAtHand() == 0 ? 7 : 8);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST(Memory, AtHandIsWhatATestSays) {
    const sys::ScopedMemoryAtHand memory(4711);
    EXPECT_EQ(sys::memoryAtHand(), 4711);
}

}  // namespace
