#include <sys/CallsInternal.h>
#include <sys/Folder.h>
#include <sys/ScopedFault.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>
#include <tests/sys/Errors.h>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>

#include <cerrno>
#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::code;
using qrv_test::errorOf;
using qrv_test::listTree;
using qrv_test::readFile;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;
using testing::ElementsAre;
using testing::IsEmpty;

class FolderNames : public testing::Test {
protected:
    FolderNames() : folder_(*sys::Folder::open(temporary_.path())) {}

    bool isInUse() const { return folder_.openFile("file")->isInUse(); }
    sys::Handle opened(int flags) const {
        return sys::calls::openAt(AT_FDCWD, (temporary_ / "file").c_str(), flags);
    }

    TemporaryFolder temporary_;
    sys::Folder folder_;
};

TEST_F(FolderNames, AreExchangedInOneStep) {
    writeFile(temporary_ / "one", "1");
    writeFile(temporary_ / "other", "2");
    EXPECT_FALSE(folder_.exchange("one", "other"));
    EXPECT_EQ(readFile(temporary_ / "one"), "2");
    EXPECT_EQ(readFile(temporary_ / "other"), "1");
    EXPECT_EQ(folder_.exchange("one", "none"), code(std::errc::no_such_file_or_directory));
    EXPECT_THAT(listTree(temporary_.path()), ElementsAre("one", "other"));
}

TEST_F(FolderNames, SayWhenTheSystemCannotExchangeThem) {
    writeFile(temporary_ / "one", "1");
    writeFile(temporary_ / "other", "2");
    for (const int cause : {EINVAL, ENOSYS, EPERM}) {
        const sys::ScopedFault fault(1, cause);
        EXPECT_EQ(folder_.exchange("one", "other"), code(std::errc::not_supported));
    }
    const sys::ScopedFault fault(1, EIO);
    EXPECT_EQ(folder_.exchange("one", "other"), code(std::errc::io_error));
}

TEST_F(FolderNames, AreGivenOnlyWhereTheyAreFree) {
    writeFile(temporary_ / "one", "1");
    writeFile(temporary_ / "other", "2");
    EXPECT_EQ(folder_.renameToFree("one", "other"), code(std::errc::file_exists));
    EXPECT_FALSE(folder_.renameToFree("one", "free"));
    EXPECT_EQ(readFile(temporary_ / "free"), "1");
    EXPECT_EQ(readFile(temporary_ / "other"), "2");
}

TEST_F(FolderNames, DoNotLeadOutOfTheFolder) {
    writeFile(temporary_ / "one", "1");
    fs::create_directory(temporary_ / "sub");
    for (const char* name : {"sub/file", "../file", "/file", ".", ".."}) {
        EXPECT_EQ(folder_.renameToFree("one", name), code(std::errc::invalid_argument)) << name;
        EXPECT_EQ(folder_.exchange("one", name), code(std::errc::invalid_argument)) << name;
        EXPECT_EQ(folder_.exchange(name, "one"), code(std::errc::invalid_argument)) << name;
    }
    EXPECT_THAT(listTree(temporary_.path()), ElementsAre("one", "sub/"));
}

TEST_F(FolderNames, AreListedInOrder) {
    EXPECT_THAT(*folder_.list(), IsEmpty());
    for (const char* name : {"sub/b", "sub/.a", "sub/deep/c"})
        writeFile(temporary_ / name, "");
    EXPECT_THAT(*folder_.list("sub"), ElementsAre(".a", "b", "deep"));
    EXPECT_EQ(errorOf(folder_.list("none")), code(std::errc::no_such_file_or_directory));
    EXPECT_EQ(errorOf(folder_.list("sub/b")), code(std::errc::not_a_directory));
    fs::create_directory_symlink("sub", temporary_ / "link");
    EXPECT_EQ(errorOf(folder_.list("link")), code(std::errc::too_many_symbolic_link_levels));
}

TEST_F(FolderNames, OfFilesThatAreWrittenToOrLockedAreInUse) {
    writeFile(temporary_ / "file", "x");
    EXPECT_FALSE(isInUse());
    {
        const sys::Handle writer = opened(O_WRONLY | O_APPEND);
        EXPECT_TRUE(isInUse());
    }
    EXPECT_FALSE(isInUse());
    const sys::Handle reader = opened(O_RDONLY);
    EXPECT_FALSE(isInUse());
    // As a program that holds the file open to keep others from it.
    ASSERT_EQ(::flock(reader.number(), LOCK_EX), 0);
    EXPECT_TRUE(isInUse());
    ASSERT_EQ(::flock(reader.number(), LOCK_UN), 0);
    EXPECT_FALSE(isInUse());
}

TEST_F(FolderNames, OfFilesWithALockOfTheOlderKindAreInUse) {
    writeFile(temporary_ / "file", "x");
    const sys::Handle reader = opened(O_RDONLY);
    // Held by the open file, not by the process, so that this one sees its own.
    struct flock lock = {
        .l_type = F_RDLCK, .l_whence = SEEK_SET, .l_start = 0, .l_len = 1, .l_pid = 0};
    ASSERT_EQ(::fcntl(reader.number(), F_OFD_SETLK, &lock), 0);
    EXPECT_TRUE(isInUse());
    lock.l_type = F_UNLCK;
    ASSERT_EQ(::fcntl(reader.number(), F_OFD_SETLK, &lock), 0);
    EXPECT_FALSE(isInUse());
}

TEST_F(FolderNames, OfFilesOfWhichNothingCanBeToldAreNotInUse) {
    writeFile(temporary_ / "file", "x");
    const sys::Outcome<sys::InputFile> file = folder_.openFile("file");
    for (int nth = 1; nth < 8; ++nth) {
        const sys::ScopedFault fault(nth, ENOLCK);
        EXPECT_FALSE(file->isInUse()) << nth;
    }
}

}  // namespace
