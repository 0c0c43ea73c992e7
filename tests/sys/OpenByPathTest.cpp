#include <sys/Folder.h>
#include <sys/Handle.h>
#include <sys/OpenByPath.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>
#include <tests/sys/Errors.h>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::code;
using qrv_test::readFile;
using qrv_test::writeFile;

class OpenByPath : public testing::Test {
protected:
    OpenByPath() : folder_(*sys::Folder::open(temporary_.path())) {}

    sys::Handle opened(const char* name, int flags) const {
        return sys::Handle(sys::openWithoutWaiting((temporary_ / name).c_str(), flags, 0600));
    }

    qrv_test::TemporaryFolder temporary_;
    sys::Folder folder_;
};

TEST_F(OpenByPath, GivesFilesAndFolders) {
    writeFile(temporary_ / "file", "contents");
    EXPECT_TRUE(opened("file", O_RDONLY).isOpen());
    EXPECT_TRUE(opened("new", O_RDWR | O_CREAT).isOpen());
    EXPECT_TRUE(opened(".", O_RDONLY).isOpen());
    EXPECT_FALSE(opened("none", O_RDONLY).isOpen());
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(OpenByPath, WaitsForNoPipe) {
    ASSERT_EQ(::mkfifo((temporary_ / "pipe").c_str(), 0600), 0);
    for (const int flags : {O_RDONLY, O_RDWR}) {
        EXPECT_FALSE(opened("pipe", flags).isOpen());
        EXPECT_EQ(errno, EINVAL);
    }
}

TEST_F(OpenByPath, AHandlesPathStaysInItsFolderWhereverThatIsMoved) {
    fs::create_directory(temporary_ / "kept");
    writeFile(temporary_ / "kept/file", "inside");
    const sys::Folder kept = *folder_.openFolder("kept");
    fs::rename(temporary_ / "kept", temporary_ / "moved");
    fs::create_directory(temporary_ / "kept");
    writeFile(temporary_ / "kept/file", "another one");
    EXPECT_EQ(readFile(kept.pathThroughHandle("file")), "inside");
}

TEST_F(OpenByPath, AFileIsMadeOnlyWhereTheNameIsFree) {
    writeFile(temporary_ / "file", "contents");
    fs::create_symlink("elsewhere", temporary_ / "link");
    EXPECT_EQ(folder_.makeFile("file", 0600), code(std::errc::file_exists));
    EXPECT_EQ(folder_.makeFile("link", 0600), code(std::errc::file_exists));
    EXPECT_FALSE(folder_.makeFile("new", 0640));
    EXPECT_EQ(readFile(temporary_ / "new"), "");
    EXPECT_EQ(readFile(temporary_ / "file"), "contents");
    EXPECT_FALSE(fs::exists(temporary_ / "elsewhere"));
}

TEST_F(OpenByPath, AnOpenFileIsReadAtAnyPlaceAndKnowsHowManyNamesItHas) {
    writeFile(temporary_ / "file", "0123456789");
    sys::Outcome<sys::InputFile> file = folder_.openFile("file");
    std::array<char, 4> bytes{};
    EXPECT_EQ(*file->readAt(4, bytes), 4U);
    EXPECT_EQ(std::string(bytes.data(), 4), "4567");
    EXPECT_EQ(*file->readAt(8, bytes), 2U);
    EXPECT_EQ(*file->readAt(99, bytes), 0U);
    EXPECT_EQ(*file->read(bytes), 4U);
    EXPECT_EQ(std::string(bytes.data(), 4), "0123");

    EXPECT_EQ(*file->countNames(), 1U);
    fs::create_hard_link(temporary_ / "file", temporary_ / "other");
    EXPECT_EQ(*file->countNames(), 2U);
}

}  // namespace
