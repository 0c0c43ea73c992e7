#include <platform/ut/Dir.h>
#include <platform/ut/FileName.h>
#include <platform/ut/ScopedFault.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <cerrno>
#include <csignal>
#include <stdexcept>

namespace {

using qrv_test::TemporaryFolder;

TEST(ScopedFault, FailsTheNthCallOnly) {
    const TemporaryFolder folder;
    const ut::ScopedFault fault(2, EIO);
    EXPECT_TRUE(ut::Dir::exists(folder.text()));
    EXPECT_EQ(fault.callCount(), 1);
    EXPECT_FALSE(fault.hasFired());
    EXPECT_FALSE(ut::Dir::exists(folder.text()));
    EXPECT_TRUE(fault.hasFired());
    EXPECT_TRUE(ut::Dir::exists(folder.text()));
    EXPECT_EQ(fault.callCount(), 3);
}

TEST(ScopedFault, DoesNotCarryOutTheFailedCall) {
    const TemporaryFolder folder;
    {
        const ut::ScopedFault fault(1, ENOSPC);
        EXPECT_FALSE(ut::Dir::create(folder.text("a")));
        EXPECT_EQ(errno, ENOSPC);
    }
    EXPECT_FALSE(ut::Dir::exists(folder.text("a")));
    EXPECT_TRUE(ut::Dir::create(folder.text("a")));
}

TEST(ScopedFault, EndsWithItsScope) {
    const TemporaryFolder folder;
    { const ut::ScopedFault fault(1, EIO); }
    EXPECT_TRUE(ut::Dir::exists(folder.text()));
    const ut::ScopedFault next(2, EIO);
    EXPECT_EQ(next.callCount(), 0);
    EXPECT_FALSE(next.hasFired());
}

TEST(ScopedFault, RefusesASecondOne) {
    const ut::ScopedFault fault(1, EIO);
    EXPECT_THROW(const ut::ScopedFault second(1, EIO), std::logic_error);
}

TEST(ScopedFault, AnInterruptedCallIsRepeated) {
    const TemporaryFolder folder;
    const ut::ScopedFault fault(1, EINTR);
    EXPECT_TRUE(ut::Dir::create(folder.text("a")));
    EXPECT_EQ(fault.callCount(), 2);
}

TEST(ScopedFaultDeathTest, KillsTheProcess) {
    const TemporaryFolder folder;
    EXPECT_EXIT(
        {
            const ut::ScopedFault fault(1, ut::ScopedFault::kKillProcess);
            ut::Dir::create(folder.text("a"));
        },
        testing::KilledBySignal(SIGKILL), "");
    EXPECT_FALSE(ut::Dir::exists(folder.text("a")));
}

}  // namespace
