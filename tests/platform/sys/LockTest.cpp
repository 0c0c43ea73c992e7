#include <platform/sys/Lock.h>
#include <tests/platform/sys/Errors.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <optional>
#include <string>

namespace {

using qrv_test::code;
using qrv_test::errorOf;
using qrv_test::readFile;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

TEST(Lock, IsHeldByOneUntilItsEnd) {
    const TemporaryFolder folder;
    const std::string path = folder / "lock";
    {
        const sys::Outcome<sys::Lock> lock = sys::Lock::tryTake(path);
        ASSERT_TRUE(lock);
        EXPECT_EQ(errorOf(sys::Lock::tryTake(path)), code(std::errc::operation_would_block));
    }
    EXPECT_TRUE(sys::Lock::tryTake(path));
}

TEST(Lock, LeavesTheFileAsItIs) {
    const TemporaryFolder folder;
    writeFile(folder / "lock", "text");
    EXPECT_TRUE(sys::Lock::tryTake(folder / "lock"));
    EXPECT_EQ(readFile(folder / "lock"), "text");
}

TEST(Lock, IsLetGoWhenItsProcessIsKilled) {
    const TemporaryFolder folder;
    const std::string path = folder / "lock";
    const pid_t child = ::fork();
    if (child == 0) {
        const sys::Outcome<sys::Lock> lock = sys::Lock::tryTake(path);
        static_cast<void>(std::raise(lock ? SIGKILL : SIGTERM));
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
    EXPECT_TRUE(sys::Lock::tryTake(path));
}

TEST(Lock, IsNotTakenThroughALinkOrInAFolderThatIsNotThere) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "");
    std::filesystem::create_symlink("file", folder / "link");
    EXPECT_EQ(errorOf(sys::Lock::tryTake(folder / "link")),
              code(std::errc::too_many_symbolic_link_levels));
    EXPECT_EQ(errorOf(sys::Lock::tryTake(folder / "none/lock")),
              code(std::errc::no_such_file_or_directory));
    EXPECT_EQ(errorOf(sys::Lock::tryTake(std::string("lo\0ck", 5))),
              code(std::errc::no_such_file_or_directory));
}

}  // namespace
