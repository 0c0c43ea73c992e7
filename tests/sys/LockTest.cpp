#include <sys/Lock.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>
#include <tests/sys/Errors.h>

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
    const sys::Folder opened = *sys::Folder::open(folder.path());
    {
        const sys::Outcome<sys::Lock> lock = sys::Lock::tryTake(opened, "lock");
        ASSERT_TRUE(lock);
        EXPECT_EQ(errorOf(sys::Lock::tryTake(opened, "lock")),
                  code(std::errc::operation_would_block));
    }
    EXPECT_TRUE(sys::Lock::tryTake(opened, "lock"));
}

TEST(Lock, LeavesTheFileAsItIs) {
    const TemporaryFolder folder;
    writeFile(folder / "lock", "text");
    EXPECT_TRUE(sys::Lock::tryTake(*sys::Folder::open(folder.path()), "lock"));
    EXPECT_EQ(readFile(folder / "lock"), "text");
}

TEST(Lock, IsLetGoWhenItsProcessIsKilled) {
    const TemporaryFolder folder;
    const sys::Folder opened = *sys::Folder::open(folder.path());
    const pid_t child = ::fork();
    if (child == 0) {
        const sys::Outcome<sys::Lock> lock = sys::Lock::tryTake(opened, "lock");
        static_cast<void>(std::raise(lock ? SIGKILL : SIGTERM));
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
    EXPECT_TRUE(sys::Lock::tryTake(opened, "lock"));
}

TEST(Lock, IsNotTakenThroughALinkOrInAFolderThatIsNotThere) {
    const TemporaryFolder folder;
    const sys::Folder opened = *sys::Folder::open(folder.path());
    writeFile(folder / "file", "");
    std::filesystem::create_symlink("file", folder / "link");
    std::filesystem::create_directory_symlink(".", folder / "way");
    for (const std::string path : {"link", "way/file", "way/new"})
        EXPECT_EQ(errorOf(sys::Lock::tryTake(opened, path)),
                  code(std::errc::too_many_symbolic_link_levels))
            << path;
    for (const std::string& path : {std::string("none/lock"), std::string("lo\0ck", 5)})
        EXPECT_EQ(errorOf(sys::Lock::tryTake(opened, path)),
                  code(std::errc::no_such_file_or_directory));
    EXPECT_FALSE(std::filesystem::exists(folder / "new"));
}

TEST(Lock, IsNotTakenOnAPipe) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(errorOf(sys::Lock::tryTake(*sys::Folder::open(folder.path()), "pipe")),
              code(std::errc::operation_not_supported));
}

}  // namespace
