#include <sys/CallsInternal.h>
#include <sys/Folder.h>
#include <sys/ScopedFault.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>
#include <tests/sys/Errors.h>

#include <fcntl.h>
#include <gmock/gmock.h>

#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::code;
using qrv_test::listTree;
using qrv_test::readFile;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;
using sys::NewFile;
using testing::AnyOf;
using testing::ElementsAre;

std::error_code replace(const sys::Folder& folder, const std::string& path,
                        NewFile::Existing existing) {
    sys::Outcome<NewFile> file = folder.newFile(path, 0644);
    if (!file)
        return file.error();
    if (const std::error_code error = file->write(std::string("new")))
        return error;
    if (const std::error_code error = file->setPermissions(0600))
        return error;
    if (const std::error_code error = file->setModified(0))
        return error;
    if (const std::error_code error = file->flush())
        return error;
    if (const std::error_code error = file->close())
        return error;
    if (const std::error_code error = file->publish(existing))
        return error;
    return folder.flush();
}

TEST(NewFileFault, LeavesTheOldOrTheNewFileWhicheverCallFails) {
    const TemporaryFolder temporary;
    const sys::Folder folder = *sys::Folder::open(temporary.path());
    // The process finds out once what its system can do; that call is none of those counted here.
    EXPECT_FALSE(folder.openFile("none/at all"));
    int failures = 0;
    for (int nth = 1;; ++nth) {
        writeFile(temporary / "a/file", "old");
        const sys::ScopedFault fault(nth, EIO);
        const std::error_code error = replace(folder, "a/file", NewFile::Existing::replace);
        EXPECT_THAT(listTree(temporary.path()), ElementsAre("a/", "a/file")) << nth;
        EXPECT_THAT(readFile(temporary / "a/file"), AnyOf("old", "new")) << nth;
        if (!fault.hasFired())
            break;
        // Of the folder's own handles nobody needs to know how they were closed.
        if (error) {
            EXPECT_EQ(error, code(std::errc::io_error)) << nth;
            ++failures;
        } else {
            EXPECT_EQ(readFile(temporary / "a/file"), "new") << nth;
        }
    }
    EXPECT_EQ(failures, 9);
}

TEST(NewFileFault, GoesOnAfterASignalAtEveryCall) {
    const TemporaryFolder temporary;
    const sys::Folder folder = *sys::Folder::open(temporary.path());
    for (int nth = 1;; ++nth) {
        writeFile(temporary / "a/file", "old");
        const sys::ScopedFault fault(nth, EINTR);
        EXPECT_FALSE(replace(folder, "a/file", NewFile::Existing::replace)) << nth;
        EXPECT_EQ(readFile(temporary / "a/file"), "new") << nth;
        if (!fault.hasFired())
            break;
    }
}

// As a file system that does not know how to rename to a free name only.
TEST(NewFileFault, NamesAFileWithoutTheSystemsHelpAndReplacesNone) {
    const TemporaryFolder temporary;
    const sys::Handle folder = sys::calls::openAt(AT_FDCWD, temporary.path().c_str(), O_RDONLY);
    for (const int error : {EINVAL, ENOSYS}) {
        writeFile(temporary / "new", "new");
        writeFile(temporary / "old", "old");
        {
            const sys::ScopedFault fault(1, error);
            EXPECT_LT(sys::calls::renameToFree(folder.number(), "new", "old"), 0);
            EXPECT_EQ(errno, EEXIST);
        }
        const sys::ScopedFault fault(1, error);
        EXPECT_EQ(sys::calls::renameToFree(folder.number(), "new", "free"), 0);
        EXPECT_THAT(listTree(temporary.path()), ElementsAre("free", "old"));
        EXPECT_EQ(readFile(temporary / "free"), "new");
        EXPECT_EQ(readFile(temporary / "old"), "old");
        fs::remove(temporary / "free");
    }
}

TEST(ScopedFault, IsAloneAndCountsOnlyWhileItLives) {
    const sys::ScopedFault fault(1, EIO);
    EXPECT_THROW(sys::ScopedFault(1, EIO), std::logic_error);
    EXPECT_FALSE(fault.hasFired());
    EXPECT_EQ(sys::Folder::open("/").error(), code(std::errc::io_error));
    EXPECT_TRUE(fault.hasFired());
    EXPECT_TRUE(sys::Folder::open("/"));
}

}  // namespace
