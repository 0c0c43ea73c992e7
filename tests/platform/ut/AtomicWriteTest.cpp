#include <platform/ut/ScopedFault.h>
#include <platform/ut/TextFile.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv_test::TemporaryFolder;
using Tree = std::vector<std::string>;

bool write(const OdString& path, const std::string& bytes) {
    ut::TextFile file(path);
    file.addLine(OdString::fromNarrow(bytes));
    return file.write();
}

// The permission bits that new files of this process lack, for one test.
class ScopedMask {
public:
    explicit ScopedMask(mode_t mask) : old_(umask(mask)) {}
    ScopedMask(const ScopedMask&) = delete;
    ScopedMask& operator=(const ScopedMask&) = delete;
    ~ScopedMask() { umask(old_); }

private:
    mode_t old_;
};

unsigned modeOf(const fs::path& file) {
    struct stat status = {};
    EXPECT_EQ(lstat(file.c_str(), &status), 0);
    return status.st_mode & 07777;
}

TEST(AtomicWrite, MakesAFileAndLeavesNothingBeside) {
    const TemporaryFolder folder;
    ASSERT_TRUE(write(folder.text("file"), "new"));
    EXPECT_EQ(qrv_test::listTree(folder.path()), Tree{"file"});
    EXPECT_EQ(qrv_test::readFile(folder / "file"), "new");
}

TEST(AtomicWrite, ReplacesALongerFile) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", std::string(100000, 'x'));
    ASSERT_TRUE(write(folder.text("file"), "new"));
    EXPECT_EQ(qrv_test::listTree(folder.path()), Tree{"file"});
    EXPECT_EQ(qrv_test::readFile(folder / "file"), "new");
}

TEST(AtomicWrite, WritesALargeFileWhole) {
    const TemporaryFolder folder;
    std::string bytes;
    while (bytes.size() < 5'000'000)
        bytes += std::to_string(bytes.size()) + ",";
    ASSERT_TRUE(write(folder.text("file"), bytes));
    EXPECT_TRUE(qrv_test::readFile(folder / "file") == bytes);
}

TEST(AtomicWrite, NeverChangesTheOldFileItself) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "old");
    fs::create_hard_link(folder / "file", folder / "other name");
    ASSERT_TRUE(write(folder.text("file"), "new"));
    EXPECT_EQ(qrv_test::readFile(folder / "file"), "new");
    EXPECT_EQ(qrv_test::readFile(folder / "other name"), "old");
}

TEST(AtomicWrite, KeepsThePermissionsOfTheOldFile) {
    const ScopedMask mask(027);
    const TemporaryFolder folder;
    for (const unsigned mode : {0666U, 0600U, 0444U, 0755U, 0U}) {
        qrv_test::writeFile(folder / "file", "old");
        ASSERT_EQ(chmod((folder / "file").c_str(), mode), 0);
        ASSERT_TRUE(write(folder.text("file"), "new"));
        EXPECT_EQ(modeOf(folder / "file"), mode);
        ASSERT_EQ(chmod((folder / "file").c_str(), 0600), 0);
    }
}

TEST(AtomicWrite, DoesNotKeepTheRightToRunAsAnother) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "old");
    ASSERT_EQ(chmod((folder / "file").c_str(), 06755), 0);
    ASSERT_TRUE(write(folder.text("file"), "new"));
    EXPECT_EQ(modeOf(folder / "file"), 0755U);
}

TEST(AtomicWrite, GivesANewFileWhatTheProcessMaskLeaves) {
    const ScopedMask mask(027);
    const TemporaryFolder folder;
    ASSERT_TRUE(write(folder.text("file"), "new"));
    EXPECT_EQ(modeOf(folder / "file"), 0640U);
}

TEST(AtomicWrite, ReplacesALinkAndDoesNotFollowIt) {
    const ScopedMask mask(022);
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "target", "old");
    fs::create_directory(folder / "folder");
    fs::create_symlink("target", folder / "link");
    fs::create_symlink("nowhere", folder / "broken");
    fs::create_symlink("folder", folder / "to folder");
    for (const char* name : {"link", "broken", "to folder"}) {
        ASSERT_TRUE(write(folder.text(name), "new")) << name;
        EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(folder / name))) << name;
        EXPECT_EQ(qrv_test::readFile(folder / name), "new") << name;
        EXPECT_EQ(modeOf(folder / name), 0644U) << name;
    }
    EXPECT_EQ(qrv_test::readFile(folder / "target"), "old");
    EXPECT_EQ(qrv_test::listTree(folder.path()),
              (Tree{"broken", "folder/", "link", "target", "to folder"}));
}

TEST(AtomicWrite, RefusesWhatIsNoFile) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "folder");
    qrv_test::writeFile(folder / "file", "old");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0666), 0);
    const Tree before = qrv_test::listTree(folder.path());
    for (const char* name : {"folder", "folder/", "folder/.", "folder/..", "pipe", "new/",
                             "missing/file", "file/below"})
        EXPECT_FALSE(write(folder.text(name), "new")) << name;
    EXPECT_EQ(qrv_test::listTree(folder.path()), before);
    EXPECT_TRUE(fs::is_fifo(folder / "pipe"));
    EXPECT_EQ(qrv_test::readFile(folder / "file"), "old");
    EXPECT_FALSE(write(L"/", "new"));
}

TEST(AtomicWrite, TakesAPathWithoutAFolder) {
    const TemporaryFolder folder;
    const fs::path before = fs::current_path();
    fs::current_path(folder.path());
    const bool isWritten = write(L"file", "new");
    fs::current_path(before);
    ASSERT_TRUE(isWritten);
    EXPECT_EQ(qrv_test::listTree(folder.path()), Tree{"file"});
}

TEST(AtomicWrite, TakesAnotherNameWhereAKilledProcessLeftItsOwn) {
    const TemporaryFolder folder;
    int undisturbedCalls = 0;
    {
        const ut::ScopedFault counter(0, 0);
        ASSERT_TRUE(write(folder.text("file"), "first"));
        undisturbedCalls = counter.callCount();
    }
    constexpr int leftBehind = 900;
    for (int number = 0; number < leftBehind; ++number)
        qrv_test::writeFile(
            folder / ("." + std::to_string(getpid()) + "-" + std::to_string(number) + ".qrv-tmp"),
            "left behind");
    const ut::ScopedFault counter(0, 0);
    ASSERT_TRUE(write(folder.text("file"), "second"));
    ASSERT_GT(counter.callCount(), undisturbedCalls) << "no name was taken";
    EXPECT_EQ(qrv_test::readFile(folder / "file"), "second");
    const Tree tree = qrv_test::listTree(folder.path());
    EXPECT_EQ(tree.size(), std::size_t{leftBehind + 1});
    for (const std::string& name : tree)
        EXPECT_EQ(qrv_test::readFile(folder / name), name == "file" ? "second" : "left behind");
}

// Lets no file of this process grow beyond the given size, which is how a disk fills up in a write.
class ScopedSizeLimit {
public:
    explicit ScopedSizeLimit(rlim_t bytes) : oldHandler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &old_);
        const rlimit limit = {bytes, old_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ScopedSizeLimit(const ScopedSizeLimit&) = delete;
    ScopedSizeLimit& operator=(const ScopedSizeLimit&) = delete;
    ~ScopedSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &old_);
        std::signal(SIGXFSZ, oldHandler_);
    }

private:
    rlimit old_ = {};
    void (*oldHandler_)(int);
};

TEST(AtomicWrite, KeepsTheOldFileWhenOnlyPartOfTheNewOneFits) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "old");
    {
        const ScopedSizeLimit limit(1000);
        EXPECT_FALSE(write(folder.text("file"), std::string(5000, 'x')));
        EXPECT_TRUE(write(folder.text("small"), std::string(1000, 'x')));
    }
    EXPECT_EQ(qrv_test::readFile(folder / "file"), "old");
    EXPECT_EQ(qrv_test::readFile(folder / "small"), std::string(1000, 'x'));
    EXPECT_EQ(qrv_test::listTree(folder.path()), (Tree{"file", "small"}));
}

}  // namespace
