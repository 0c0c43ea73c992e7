#include <sys/BeneathInternal.h>
#include <sys/CallsInternal.h>
#include <sys/ScopedFault.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <ostream>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

enum class Way { system, walking };

std::string bytesOf(int file) {
    std::array<char, 100> bytes = {};
    const ssize_t count = ::read(file, bytes.data(), bytes.size());
    return {bytes.data(), static_cast<std::size_t>(count)};
}

// Both ways must give the same answers.
class Beneath : public testing::TestWithParam<Way> {
protected:
    Beneath() {
        writeFile(folder_ / "root/a/b/file", "inside");
        writeFile(folder_ / "outside/file", "outside");
        fs::create_directory_symlink("../outside", folder_ / "root/link");
        fs::create_directory_symlink("a/b", folder_ / "root/inner");
        fs::create_directory_symlink(folder_ / "outside", folder_ / "root/a/absolute");
        fs::create_symlink("b/file", folder_ / "root/a/fileLink");
        root_ = ::open((folder_ / "root").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    }
    Beneath(const Beneath&) = delete;
    Beneath& operator=(const Beneath&) = delete;
    ~Beneath() override { ::close(root_); }

    sys::Handle open(const std::string& path, int flags = O_RDONLY | O_NOFOLLOW) const {
        if (GetParam() == Way::walking)
            return sys::openBeneathByWalking(root_, path, flags, 0644);
        return sys::openBeneath(root_, path, flags, 0644);
    }
    int errorOf(const std::string& path, int flags = O_RDONLY | O_NOFOLLOW) const {
        errno = 0;
        return open(path, flags).isOpen() ? 0 : errno;
    }

    TemporaryFolder folder_;
    int root_ = -1;
};

TEST(OpenBeneath, IsTheSystemsHere) {
    EXPECT_TRUE(sys::calls::hasOpenBeneath());
}

TEST_P(Beneath, OpensFilesAndFolders) {
    EXPECT_EQ(bytesOf(open("a/b/file").number()), "inside");
    for (const char* path : {".", "a", "a/b"})
        EXPECT_TRUE(open(path, O_PATH | O_DIRECTORY).isOpen()) << path;
}

TEST_P(Beneath, MakesAFile) {
    EXPECT_TRUE(open("a/new", O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW).isOpen());
    EXPECT_TRUE(fs::is_regular_file(folder_ / "root/a/new"));
    EXPECT_EQ(errorOf("a/new", O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW), EEXIST);
}

TEST_P(Beneath, RefusesEveryLinkOnTheWay) {
    for (const char* path : {"link/file", "link/none", "inner/file", "a/absolute/file"}) {
        EXPECT_EQ(errorOf(path), ELOOP) << path;
        EXPECT_EQ(errorOf(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW), ELOOP) << path;
    }
    EXPECT_EQ(errorOf("link", O_PATH | O_DIRECTORY), ELOOP);
    EXPECT_EQ(errorOf("a/absolute", O_RDONLY | O_DIRECTORY), ELOOP);
}

TEST_P(Beneath, RefusesALinkAtTheEnd) {
    EXPECT_EQ(errorOf("a/fileLink"), ELOOP);
    EXPECT_EQ(errorOf("link"), ELOOP);
}

TEST_P(Beneath, OpensALinkItselfWhenOnlyTheNameIsAskedFor) {
    const sys::Handle link = open("a/fileLink", O_PATH | O_NOFOLLOW);
    struct stat status = {};
    ASSERT_EQ(::fstat(link.number(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
}

TEST_P(Beneath, RefusesPathsThatCouldLeave) {
    const std::string outside = folder_ / "outside/file";
    for (const std::string& path :
         {std::string(".."), std::string("../outside/file"), std::string("a/../../outside/file"),
          std::string("a/.."), std::string("a/b/../b/file"), outside, std::string("/"),
          std::string("a//b/file"), std::string("a/"), std::string("./a"), std::string("a/./b"),
          std::string("/a"), std::string("//")})
        EXPECT_EQ(errorOf(path), EINVAL) << path;
}

TEST_P(Beneath, FindsNothingUnderAPathThatIsNone) {
    EXPECT_EQ(errorOf(""), ENOENT);
    EXPECT_EQ(errorOf(std::string("a\0b", 3)), ENOENT);
    EXPECT_EQ(errorOf("a/none"), ENOENT);
    EXPECT_EQ(errorOf("none/file"), ENOENT);
    EXPECT_EQ(errorOf("a/b/file/more"), ENOTDIR);
    EXPECT_EQ(errorOf("a/" + std::string(256, 'n')), ENAMETOOLONG);
}

TEST_P(Beneath, GoesOnAfterASignal) {
    const sys::ScopedFault fault(1, EINTR);
    EXPECT_TRUE(open("a/b/file").isOpen());
    EXPECT_TRUE(fault.hasFired());
}

TEST_P(Beneath, NeverLeavesWhileAFolderBecomesALink) {
    const fs::path a = folder_ / "root/a";
    const sys::Handle before = open("a/b", O_PATH | O_DIRECTORY);
    fs::rename(a, folder_ / "root/moved");
    fs::create_directory_symlink(folder_ / "outside", a);
    EXPECT_EQ(errorOf("a/file"), ELOOP);
    EXPECT_EQ(bytesOf(sys::openBeneath(before.number(), "file", O_RDONLY).number()), "inside");
}

INSTANTIATE_TEST_SUITE_P(BothWays, Beneath, testing::Values(Way::system, Way::walking),
                         [](const auto& way) {
                             return way.param == Way::system ? "BySystem" : "ByWalking";
                         });

}  // namespace
