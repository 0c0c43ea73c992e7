#include <platform/ut/ScopedFault.h>
#include <platform/ut/TextFile.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <grp.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
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
    for (const unsigned mode : {0666U, 0600U, 0644U, 0755U, 0200U}) {
        qrv_test::writeFile(folder / "file", "old");
        ASSERT_EQ(chmod((folder / "file").c_str(), mode), 0);
        ASSERT_TRUE(write(folder.text("file"), "new"));
        EXPECT_EQ(modeOf(folder / "file"), mode);
        ASSERT_EQ(chmod((folder / "file").c_str(), 0600), 0);
    }
}

/// Somebody, and the groups they are in; the first is their own.
struct Person {
    uid_t user;
    std::vector<gid_t> groups;
};

constexpr uid_t owner = 1000;
constexpr gid_t office = 2000;

/// Whether the person could write the file, in a process of their own.
bool isWrittenBy(const Person& person, const OdString& path) {
    const pid_t child = fork();
    if (child == 0) {
        const bool isPerson = setgroups(person.groups.size(), person.groups.data()) == 0 &&
                              setgid(person.groups[0]) == 0 && setuid(person.user) == 0;
        _exit(isPerson && write(path, "new") ? 0 : 1);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// A state that belonged to somebody else locked its owner out when it was written by the
// super-user: the new file had the permissions of the old one, but not its owner.
class AtomicWriteByOthers : public testing::Test {
protected:
    void SetUp() override {
        if (geteuid() != 0)
            GTEST_SKIP() << "only the super-user can give files to others";
        ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
    }

    /// Owner, group and permissions of the file after the person has written it.
    std::string after(unsigned mode, const Person& person) {
        qrv_test::writeFile(file, "old");
        EXPECT_EQ(chown(file.c_str(), owner, office), 0);
        EXPECT_EQ(chmod(file.c_str(), mode), 0);
        if (!isWrittenBy(person, folder.text("file")))
            return qrv_test::readFile(file) == "old" ? "refused" : "refused and lost";
        EXPECT_EQ(qrv_test::readFile(file), "new");
        EXPECT_EQ(qrv_test::listTree(folder.path()), Tree{"file"});
        struct stat status = {};
        EXPECT_EQ(lstat(file.c_str(), &status), 0);
        char shown[64];
        std::snprintf(shown, sizeof shown, "%u:%u %04o", status.st_uid, status.st_gid,
                      status.st_mode & 07777U);
        return shown;
    }

    const TemporaryFolder folder;
    const fs::path file = folder / "file";
    const Person root = {0, {0}};
    const Person colleague = {1001, {1001, office}};
    const Person guest = {1002, {1002}};
};

TEST_F(AtomicWriteByOthers, KeepsOwnerAndGroupWhereTheSystemAllowsIt) {
    EXPECT_EQ(after(0660, root), "1000:2000 0660");
    EXPECT_EQ(after(0640, root), "1000:2000 0640");
    EXPECT_EQ(after(0660, {owner, {owner, office}}), "1000:2000 0660");
    EXPECT_EQ(after(0660, colleague), "1001:2000 0660");
}

TEST_F(AtomicWriteByOthers, GivesAnotherGroupNoMoreThanEverybody) {
    EXPECT_EQ(after(0664, {owner, {owner}}), "1000:1000 0644");
    EXPECT_EQ(after(0666, guest), "1002:1002 0666");
}

// A file that its owner had made read-only was replaced all the same, for only the folder was
// asked.
TEST_F(AtomicWriteByOthers, RefusesAFileThatMayNotBeWritten) {
    EXPECT_EQ(after(0440, {owner, {owner, office}}), "refused");
    EXPECT_EQ(after(0640, colleague), "refused");
    EXPECT_EQ(after(0660, guest), "refused");
    EXPECT_EQ(after(0440, root), "1000:2000 0440");
    EXPECT_EQ(qrv_test::listTree(folder.path()), Tree{"file"});
}

TEST_F(AtomicWriteByOthers, TellsARefusalToGiveAFileAwayFromAFailure) {
    constexpr int giveAway = 6;
    const auto outcome = [&](int errorNumber) {
        qrv_test::writeFile(file, "old");
        EXPECT_EQ(chown(file.c_str(), owner, office), 0);
        EXPECT_EQ(chmod(file.c_str(), 0660), 0);
        const ut::ScopedFault fault(giveAway, errorNumber);
        return write(folder.text("file"), "new");
    };
    EXPECT_TRUE(outcome(EPERM));
    struct stat status = {};
    EXPECT_EQ(lstat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 0U) << "the call that failed gave the file away";
    EXPECT_EQ(status.st_gid, office);
    EXPECT_FALSE(outcome(EIO));
    EXPECT_EQ(qrv_test::readFile(file), "old");
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
