#include <sys/Append.h>
#include <sys/ScopedFault.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>
#include <tests/sys/Errors.h>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::code;
using qrv_test::readFile;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

const std::string added = "new";

TEST(Append, AddsToTheEndOfARegularFileOnly) {
    const TemporaryFolder temporary;
    const sys::Folder folder = *sys::Folder::open(temporary.path());
    writeFile(temporary / "a/file", "old");
    fs::create_symlink("file", temporary / "a/link");
    fs::create_directory_symlink("a", temporary / "b");
    ASSERT_EQ(::mkfifo((temporary / "a/pipe").c_str(), 0600), 0);
    EXPECT_EQ(sys::append(folder, "a/file", added), std::error_code());
    EXPECT_EQ(readFile(temporary / "a/file"), "oldnew");
    EXPECT_EQ(sys::append(folder, "a/none", added), code(std::errc::no_such_file_or_directory));
    EXPECT_FALSE(fs::exists(temporary / "a/none"));
    EXPECT_EQ(sys::append(folder, "a/link", added), code(std::errc::too_many_symbolic_link_levels));
    EXPECT_EQ(sys::append(folder, "b/file", added), code(std::errc::too_many_symbolic_link_levels));
    EXPECT_EQ(sys::append(folder, "a", added), code(std::errc::is_a_directory));
    EXPECT_EQ(sys::append(folder, "../file", added), code(std::errc::invalid_argument));
    EXPECT_TRUE(sys::append(folder, "a/pipe", added));
    EXPECT_EQ(readFile(temporary / "a/file"), "oldnew");
}

// Symptom: "'.qrv/references' is damaged", after a disk had denied to flush a line.
// Cause: the line stood there all the same, and was added once more in another way.
TEST(Append, LeavesTheFileAsItWasWhicheverCallFails) {
    const TemporaryFolder temporary;
    const sys::Folder folder = *sys::Folder::open(temporary.path());
    // The process finds out once what its system can do; that call is none of those counted here.
    EXPECT_FALSE(folder.openFile("none/at all"));
    int failures = 0;
    for (int nth = 1;; ++nth) {
        writeFile(temporary / "a/file", "old");
        const sys::ScopedFault fault(nth, EIO);
        const std::error_code error = sys::append(folder, "a/file", added);
        EXPECT_EQ(readFile(temporary / "a/file"), error ? "old" : "oldnew") << nth;
        if (!fault.hasFired())
            break;
        if (error)
            ++failures;
    }
    // Those that open the folder and the file, look at it, write and flush it. How a close ends
    // matters to nobody then.
    EXPECT_EQ(failures, 5);
}

}  // namespace
