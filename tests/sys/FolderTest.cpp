#include <sys/Folder.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>
#include <tests/sys/Errors.h>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

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

constexpr auto missing = std::errc::no_such_file_or_directory;
constexpr auto throughLink = std::errc::too_many_symbolic_link_levels;

class Folder : public testing::Test {
protected:
    Folder() : folder_(*sys::Folder::open(temporary_.path())) {}

    void setTime(const std::string& name, timespec time) {
        const std::array<timespec, 2> times = {time, time};
        ASSERT_EQ(::utimensat(AT_FDCWD, (temporary_ / name).c_str(), times.data(), 0), 0);
    }

    TemporaryFolder temporary_;
    sys::Folder folder_;
};

TEST_F(Folder, OpensAnExistingFolderAlsoThroughALink) {
    fs::create_directory(temporary_ / "real");
    fs::create_directory_symlink("real", temporary_ / "link");
    writeFile(temporary_ / "file", "");
    EXPECT_TRUE(sys::Folder::open(temporary_ / "link"));
    EXPECT_EQ(errorOf(sys::Folder::open(temporary_ / "none")), code(missing));
    EXPECT_EQ(errorOf(sys::Folder::open(temporary_ / "file")), code(std::errc::not_a_directory));
    EXPECT_EQ(errorOf(sys::Folder::open(std::string("/\0tmp", 5))), code(missing));
}

TEST_F(Folder, OpensASubFolderWithoutLinks) {
    writeFile(temporary_ / "real/file", "contents");
    fs::create_directory_symlink("real", temporary_ / "link");
    EXPECT_TRUE(folder_.openFolder("real")->openFile("file"));
    EXPECT_EQ(errorOf(folder_.openFolder("link")), code(throughLink));
}

TEST_F(Folder, TellsKindSizeTimeAndPermissions) {
    writeFile(temporary_ / "a/file", "four");
    fs::permissions(temporary_ / "a/file", fs::perms(0640));
    setTime("a/file", {.tv_sec = 1700000000, .tv_nsec = 123456789});
    const sys::Outcome<sys::FileStatus> status = folder_.status("a/file");
    ASSERT_TRUE(status);
    EXPECT_EQ(status->kind, sys::FileKind::regular);
    EXPECT_EQ(status->sizeBytes, 4);
    EXPECT_EQ(status->modifiedNs, 1700000000123456789);
    EXPECT_EQ(status->permissions, 0640U);
}

TEST_F(Folder, TellsTheKindOfALinkItself) {
    writeFile(temporary_ / "a/file", "");
    fs::create_symlink("file", temporary_ / "a/link");
    fs::create_symlink("a", temporary_ / "top");
    ASSERT_EQ(::mkfifo((temporary_ / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(folder_.status("a/link")->kind, sys::FileKind::link);
    EXPECT_EQ(folder_.status("top")->kind, sys::FileKind::link);
    EXPECT_EQ(folder_.status("a")->kind, sys::FileKind::folder);
    EXPECT_EQ(folder_.status(".")->kind, sys::FileKind::folder);
    EXPECT_EQ(folder_.status("pipe")->kind, sys::FileKind::other);
    EXPECT_EQ(errorOf(folder_.status("top/file")), code(throughLink));
    EXPECT_EQ(errorOf(folder_.status("none")), code(missing));
    EXPECT_EQ(errorOf(folder_.status("..")), code(std::errc::invalid_argument));
}

TEST_F(Folder, KeepsTimesBefore1970AndCutsThoseThatDoNotFit) {
    writeFile(temporary_ / "file", "");
    setTime("file", {.tv_sec = -2, .tv_nsec = 500000000});
    EXPECT_EQ(folder_.status("file")->modifiedNs, -1500000000);
    // Only some file systems hold the year 2400; the others cut it themselves.
    setTime("file", {.tv_sec = 13569465600, .tv_nsec = 0});
    EXPECT_GT(folder_.status("file")->modifiedNs, 2147483647LL * 1000000000);
}

TEST_F(Folder, TellsVersionsOfAFileApart) {
    writeFile(temporary_ / "file", "before");
    const sys::FileStamp before = *folder_.stamp("file");
    EXPECT_EQ(*folder_.stamp("file"), before);
    EXPECT_EQ(before.sizeBytes, 6);
    EXPECT_EQ(before.modifiedNs, folder_.status("file")->modifiedNs);
    setTime("file", {.tv_sec = 1700000000, .tv_nsec = 1});
    const sys::FileStamp changed = *folder_.stamp("file");
    EXPECT_EQ(changed.number, before.number);
    EXPECT_EQ(changed.modifiedNs, 1700000000000000001);
    EXPECT_GE(changed.changedNs, before.changedNs);
    // Another file with the same bytes and time.
    writeFile(temporary_ / "other", "before");
    setTime("other", {.tv_sec = 1700000000, .tv_nsec = 1});
    fs::rename(temporary_ / "other", temporary_ / "file");
    EXPECT_NE(folder_.stamp("file")->number, changed.number);
    EXPECT_EQ(errorOf(folder_.stamp("missing")), code(std::errc::no_such_file_or_directory));
}

TEST_F(Folder, ReadsAFileToItsEnd) {
    writeFile(temporary_ / "a/file", "0123456789");
    sys::Outcome<sys::InputFile> file = folder_.openFile("a/file");
    ASSERT_TRUE(file);
    std::array<char, 7> buffer = {};
    EXPECT_EQ(*file->read(buffer), 7U);
    EXPECT_EQ(std::string(buffer.data(), 7), "0123456");
    EXPECT_EQ(*file->read(buffer), 3U);
    EXPECT_EQ(*file->read(buffer), 0U);
    EXPECT_EQ(file->stamp()->sizeBytes, 10);
}

TEST_F(Folder, ReadsAWholeFileUnlessItIsTooLong) {
    writeFile(temporary_ / "file", "0123456789");
    sys::Outcome<sys::InputFile> file = folder_.openFile("file");
    ASSERT_TRUE(file);
    std::array<char, 7> buffer = {};
    EXPECT_EQ(*file->read(buffer), 7U);
    const sys::Outcome<std::vector<char>> whole = file->readWhole(10);
    ASSERT_TRUE(whole);
    EXPECT_EQ(std::string(whole->begin(), whole->end()), "0123456789");
    EXPECT_EQ(file->readWhole(9).error(), std::errc::file_too_large);
}

TEST_F(Folder, OpensTheFolderOfAName) {
    writeFile(temporary_ / "a/file", "");
    fs::create_symlink("a", temporary_ / "link");
    const sys::Outcome<sys::NameInFolder> place = folder_.openFolderOf("a/new");
    ASSERT_TRUE(place);
    EXPECT_EQ(place->name, "new");
    EXPECT_TRUE(place->folder.openFile("file"));
    EXPECT_EQ(folder_.openFolderOf("file")->name, "file");
    EXPECT_EQ(folder_.openFolderOf("none/file").error(), std::errc::no_such_file_or_directory);
    EXPECT_EQ(folder_.openFolderOf("link/file").error(), std::errc::too_many_symbolic_link_levels);
    EXPECT_EQ(folder_.openFolderOf(".").error(), std::errc::invalid_argument);
    EXPECT_EQ(folder_.openFolderOf("../file").error(), std::errc::invalid_argument);
}

TEST_F(Folder, SeesByTheStampThatAFileWasChanged) {
    writeFile(temporary_ / "file", "before");
    setTime("file", {.tv_sec = 1700000000, .tv_nsec = 1});
    const sys::Outcome<sys::InputFile> file = folder_.openFile("file");
    const sys::FileStamp before = *file->stamp();
    EXPECT_EQ(*file->stamp(), before);
    setTime("file", {.tv_sec = 1700000000, .tv_nsec = 2});
    EXPECT_FALSE(*file->stamp() == before);
}

TEST_F(Folder, OpensNothingButRegularFilesAndWaitsForNobody) {
    fs::create_directory(temporary_ / "folder");
    writeFile(temporary_ / "file", "");
    fs::create_symlink("file", temporary_ / "link");
    ASSERT_EQ(::mkfifo((temporary_ / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(errorOf(folder_.openFile("folder")), code(std::errc::is_a_directory));
    EXPECT_EQ(errorOf(folder_.openFile("link")), code(throughLink));
    EXPECT_EQ(errorOf(folder_.openFile("pipe")), code(std::errc::operation_not_supported));
    EXPECT_EQ(errorOf(folder_.openFile("none")), code(missing));
}

TEST_F(Folder, OpensNoSocket) {
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::string path = temporary_ / "socket";
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(errorOf(folder_.openFile("socket")), code(std::errc::operation_not_supported));
    ::close(socket);
}

TEST_F(Folder, RemovesAFileOrALinkAndNothingElse) {
    writeFile(temporary_ / "a/file", "");
    writeFile(temporary_ / "kept/file", "");
    fs::create_directory_symlink("kept", temporary_ / "link");
    EXPECT_EQ(folder_.removeFile("link/file"), code(throughLink));
    EXPECT_EQ(folder_.removeFile("a"), code(std::errc::is_a_directory));
    EXPECT_EQ(folder_.removeFile("."), code(std::errc::invalid_argument));
    EXPECT_FALSE(folder_.removeFile("link"));
    EXPECT_FALSE(folder_.removeFile("a/file"));
    EXPECT_EQ(folder_.removeFile("a/file"), code(missing));
    EXPECT_THAT(listTree(temporary_.path()), ElementsAre("a/", "kept/", "kept/file"));
}

TEST_F(Folder, RenamesBetweenItsFoldersOverAFile) {
    writeFile(temporary_ / "a/new", "new");
    writeFile(temporary_ / "b/old", "old");
    fs::create_directory_symlink("b", temporary_ / "link");
    EXPECT_EQ(folder_.rename("a/new", "link/old"), code(throughLink));
    EXPECT_EQ(folder_.rename("a/new", "none/old"), code(missing));
    EXPECT_EQ(folder_.rename("a/new", "../old"), code(std::errc::invalid_argument));
    EXPECT_FALSE(folder_.rename("a/new", "b/old"));
    EXPECT_THAT(listTree(temporary_.path()), ElementsAre("a/", "b/", "b/old", "link"));
    EXPECT_EQ(readFile(temporary_ / "b/old"), "new");
}

TEST_F(Folder, RemovesEmptyFoldersUpToItself) {
    fs::create_directories(temporary_ / "a/b/c");
    writeFile(temporary_ / "a/kept", "");
    folder_.removeEmptyParents("a/b/c/file");
    EXPECT_THAT(listTree(temporary_.path()), ElementsAre("a/", "a/kept"));
    fs::remove(temporary_ / "a/kept");
    folder_.removeEmptyParents("a/kept");
    EXPECT_THAT(listTree(temporary_.path()), IsEmpty());
    EXPECT_TRUE(fs::is_directory(temporary_.path()));
}

TEST_F(Folder, MakesFoldersThatAreMissing) {
    EXPECT_FALSE(folder_.makeFolders("a/b/c"));
    EXPECT_FALSE(folder_.makeFolders("a/b/c"));
    EXPECT_FALSE(folder_.makeFolders("."));
    EXPECT_THAT(listTree(temporary_.path()), ElementsAre("a/", "a/b/", "a/b/c/"));
}

TEST_F(Folder, MakesNoFolderBehindALinkOrAFile) {
    fs::create_directory(temporary_ / "real");
    fs::create_directory_symlink("real", temporary_ / "link");
    writeFile(temporary_ / "file", "");
    EXPECT_EQ(folder_.makeFolders("link/new"), code(throughLink));
    EXPECT_EQ(folder_.makeFolders("link"), code(throughLink));
    EXPECT_EQ(folder_.makeFolders("file/new"), code(std::errc::not_a_directory));
    EXPECT_EQ(folder_.makeFolders("a/../b"), code(std::errc::invalid_argument));
    EXPECT_THAT(listTree(temporary_.path()), ElementsAre("file", "link", "real/"));
}

TEST_F(Folder, FlushesItselfAFolderBelowAndTheWholeFileSystem) {
    fs::create_directories(temporary_ / "a/b");
    writeFile(temporary_ / "file", "");
    EXPECT_FALSE(folder_.flush());
    EXPECT_FALSE(folder_.flush("a/b"));
    EXPECT_FALSE(folder_.flushFileSystem());
    EXPECT_EQ(folder_.flush("none"), code(missing));
    EXPECT_EQ(folder_.flush("file"), code(std::errc::not_a_directory));
}

TEST_F(Folder, RemovesLeftoversThatAreOldEnough) {
    for (const char* name :
         {"a/.1-0.qrv-tmp", "a/.1-1.qrv-tmp", "a/x.qrv-tmp", "a/.old", ".1-0.qrv-tmp"})
        writeFile(temporary_ / name, "");
    fs::create_directory(temporary_ / "a/.2-0.qrv-tmp");
    const timespec longAgo = {.tv_sec = 1000000000, .tv_nsec = 0};
    for (const char* name : {"a/.1-0.qrv-tmp", "a/x.qrv-tmp", "a/.old", ".1-0.qrv-tmp"})
        setTime(name, longAgo);
    folder_.removeLeftovers("a", std::chrono::hours(24));
    EXPECT_THAT(listTree(temporary_.path()),
                ElementsAre(".1-0.qrv-tmp", "a/", "a/.1-1.qrv-tmp", "a/.2-0.qrv-tmp/", "a/.old",
                            "a/x.qrv-tmp"));
    folder_.removeLeftovers("none", std::chrono::hours(24));
}

TEST_F(Folder, LetsOnlyAnOldFileCountAsNewAgain) {
    writeFile(temporary_ / "a/old", "x");
    writeFile(temporary_ / "young", "x");
    fs::permissions(temporary_ / "a/old", fs::perms::owner_read);
    fs::create_symlink("a/old", temporary_ / "link");
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto hourAgo = std::chrono::floor<std::chrono::seconds>(now) - std::chrono::hours(1);
    for (const char* name : {"a/old", "young"})
        setTime(name, {.tv_sec = hourAgo.count(), .tv_nsec = 0});
    const std::int64_t hourAgoNs = std::chrono::nanoseconds(hourAgo).count();

    EXPECT_FALSE(folder_.refresh("young", std::chrono::hours(2)));
    EXPECT_EQ(folder_.status("young")->modifiedNs, hourAgoNs);
    EXPECT_EQ(folder_.refresh("link", std::chrono::minutes(0)),
              std::errc::too_many_symbolic_link_levels);
    EXPECT_EQ(folder_.refresh("none", std::chrono::minutes(0)),
              std::errc::no_such_file_or_directory);
    EXPECT_EQ(folder_.status("a/old")->modifiedNs, hourAgoNs);
    EXPECT_FALSE(folder_.refresh("a/old", std::chrono::minutes(59)));
    EXPECT_GT(folder_.status("a/old")->modifiedNs, hourAgoNs);
}

// What one thread renames, another opens by the old path: whichever it gets, it never lies outside.
TEST_F(Folder, StaysInsideWhileAnotherExchangesAFolderForALink) {
    writeFile(temporary_ / "root/a/file", "inside");
    writeFile(temporary_ / "outside/file", "outside");
    fs::create_directory_symlink("../outside", temporary_ / "root/b");
    const sys::Folder root = *sys::Folder::open(temporary_ / "root");
    std::thread exchange([&] {
        for (int round = 0; round < 2000; ++round) {
            fs::rename(temporary_ / "root/a", temporary_ / "root/c");
            fs::rename(temporary_ / "root/b", temporary_ / "root/a");
            fs::rename(temporary_ / "root/a", temporary_ / "root/b");
            fs::rename(temporary_ / "root/c", temporary_ / "root/a");
        }
    });
    int opened = 0;
    // On a busy machine either thread may come to its turn after the other has ended.
    for (int round = 0; round < 5000 || opened == 0; ++round) {
        sys::Outcome<sys::InputFile> file = root.openFile("a/file");
        std::array<char, 8> buffer = {};
        if (!file)
            continue;
        ++opened;
        ASSERT_EQ(*file->read(buffer), 6U);
    }
    exchange.join();
}

}  // namespace
