#include <platform/ut/File.h>
#include <platform/ut/ScopedFault.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::TemporaryFolder;

std::string readPiece(ut::File& file, std::size_t size) {
    std::string piece(size, '?');
    piece.resize(file.read(piece.data(), size));
    return piece;
}

TEST(File, IsClosedWhenMade) {
    ut::File file;
    EXPECT_FALSE(file.isOpened());
    EXPECT_EQ(file.length(), 0);
    EXPECT_EQ(readPiece(file, 10), "");
    file.close();
    EXPECT_FALSE(file.isOpened());
}

TEST(File, ReadsPieceByPiece) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "a", std::string("0123\0"
                                                  "56789",
                                                  10));
    ut::File file;
    ASSERT_TRUE(file.open(folder.text("a")));
    EXPECT_TRUE(file.isOpened());
    EXPECT_EQ(file.length(), 10);
    EXPECT_EQ(readPiece(file, 4), "0123");
    EXPECT_EQ(readPiece(file, 0), "");
    EXPECT_EQ(readPiece(file, 4), std::string("\0"
                                              "567",
                                              4));
    EXPECT_EQ(readPiece(file, 4), "89");
    EXPECT_EQ(readPiece(file, 4), "");
    EXPECT_EQ(file.length(), 10);
}

TEST(File, ForgetsTheFileWhenClosed) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "a", "abc");
    ut::File file;
    ASSERT_TRUE(file.open(folder.text("a")));
    file.close();
    EXPECT_FALSE(file.isOpened());
    EXPECT_EQ(file.length(), 0);
    EXPECT_EQ(readPiece(file, 3), "");
}

TEST(File, OpensAnotherFileInPlaceOfTheFirst) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "a", "abc");
    qrv_test::writeFile(folder / "b", "longer");
    ut::File file;
    ASSERT_TRUE(file.open(folder.text("a")));
    ASSERT_TRUE(file.open(folder.text("b")));
    EXPECT_EQ(file.length(), 6);
    EXPECT_EQ(readPiece(file, 10), "longer");
    EXPECT_FALSE(file.open(folder.text("missing")));
    EXPECT_FALSE(file.isOpened());
    EXPECT_EQ(file.length(), 0);
}

TEST(File, FollowsALink) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "a", "abc");
    fs::create_symlink("a", folder / "link");
    ut::File file;
    ASSERT_TRUE(file.open(folder.text("link")));
    EXPECT_EQ(readPiece(file, 10), "abc");
}

TEST(File, RefusesWhatIsNoRegularFile) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "folder");
    fs::create_symlink("nowhere", folder / "broken");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0666), 0);
    for (const char* name : {"folder", "broken", "pipe", "missing"}) {
        ut::File file;
        EXPECT_FALSE(file.open(folder.text(name))) << name;
        EXPECT_FALSE(file.isOpened()) << name;
        EXPECT_EQ(file.length(), 0) << name;
    }
    EXPECT_FALSE(ut::File().open(L"/dev/zero"));
}

TEST(File, ClosesItsDescriptor) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "a", "abc");
    const auto descriptors = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    const auto before = descriptors();
    {
        ut::File file;
        ASSERT_TRUE(file.open(folder.text("a")));
        ASSERT_TRUE(file.open(folder.text("a")));
        EXPECT_EQ(descriptors(), before + 1);
    }
    EXPECT_FALSE(ut::File().open(folder.text()));
    EXPECT_EQ(descriptors(), before);
}

TEST(File, ReportsAFailureAtEachCallOfOpen) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "a", "abc");
    for (int nth : {1, 2}) {
        ut::File file;
        const ut::ScopedFault fault(nth, EIO);
        EXPECT_FALSE(file.open(folder.text("a"))) << nth;
        EXPECT_TRUE(fault.hasFired()) << nth;
        EXPECT_EQ(file.length(), 0) << nth;
    }
}

TEST(File, EndsAReadAtAFailureAndRepeatsAnInterruptedOne) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "a", "abcdef");
    ut::File file;
    ASSERT_TRUE(file.open(folder.text("a")));
    {
        const ut::ScopedFault fault(1, EINTR);
        EXPECT_EQ(readPiece(file, 2), "ab");
        EXPECT_EQ(fault.callCount(), 2);
    }
    {
        const ut::ScopedFault fault(1, EIO);
        EXPECT_EQ(readPiece(file, 2), "");
    }
    const ut::ScopedFault fault(2, EIO);
    EXPECT_EQ(readPiece(file, 100), "cdef");
    EXPECT_TRUE(fault.hasFired());
}

}  // namespace
