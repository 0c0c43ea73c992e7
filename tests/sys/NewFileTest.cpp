#include <sys/Folder.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>
#include <tests/sys/Errors.h>

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <array>
#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv_test::code;
using qrv_test::errorOf;
using qrv_test::listTree;
using qrv_test::readFile;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;
using sys::NewFile;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;

constexpr auto throughLink = std::errc::too_many_symbolic_link_levels;

class NewFileTest : public testing::Test {
protected:
    NewFileTest() : folder_(*sys::Folder::open(temporary_.path())) { ::umask(022); }

    NewFile written(const std::string& path, const std::string& bytes) {
        sys::Outcome<NewFile> file = folder_.newFile(path, 0666);
        EXPECT_FALSE(file->write(bytes));
        return std::move(*file);
    }
    fs::perms permissions(const std::string& name) const {
        return fs::status(temporary_ / name).permissions();
    }

    TemporaryFolder temporary_;
    sys::Folder folder_;
};

TEST_F(NewFileTest, AppearsOnlyWhenItIsPublished) {
    NewFile file = written("a/b/file", "contents");
    EXPECT_THAT(listTree(temporary_.path()),
                ElementsAre("a/", "a/b/", MatchesRegex(R"(a/b/\.[0-9]+-[0-9]+\.qrv-tmp)")));
    EXPECT_FALSE(file.flush());
    EXPECT_FALSE(file.publish(NewFile::Existing::replace));
    EXPECT_THAT(listTree(temporary_.path()), ElementsAre("a/", "a/b/", "a/b/file"));
    EXPECT_EQ(readFile(temporary_ / "a/b/file"), "contents");
}

TEST_F(NewFileTest, LeavesNothingWhenItIsNotPublished) {
    writeFile(temporary_ / "file", "old");
    { const NewFile file = written("file", "new"); }
    EXPECT_THAT(listTree(temporary_.path()), ElementsAre("file"));
    EXPECT_EQ(readFile(temporary_ / "file"), "old");
}

TEST_F(NewFileTest, TakesThePlaceOfAFileOrALink) {
    writeFile(temporary_ / "file", "old");
    fs::create_symlink("file", temporary_ / "link");
    EXPECT_FALSE(written("link", "new").publish(NewFile::Existing::replace));
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(temporary_ / "link")));
    EXPECT_EQ(readFile(temporary_ / "file"), "old");
    EXPECT_FALSE(written("file", "new").publish(NewFile::Existing::replace));
    EXPECT_EQ(readFile(temporary_ / "file"), "new");
}

TEST_F(NewFileTest, DoesNotTakeThePlaceOfAFolder) {
    fs::create_directory(temporary_ / "folder");
    EXPECT_EQ(written("folder", "new").publish(NewFile::Existing::replace),
              code(std::errc::is_a_directory));
    EXPECT_THAT(listTree(temporary_.path()), ElementsAre("folder/"));
}

TEST_F(NewFileTest, KeepsWhatIsThereWhenAskedTo) {
    writeFile(temporary_ / "file", "old");
    NewFile file = written("file", "new");
    EXPECT_EQ(file.publish(NewFile::Existing::keep), code(std::errc::file_exists));
    file.setName("other");
    EXPECT_FALSE(file.publish(NewFile::Existing::keep));
    EXPECT_EQ(readFile(temporary_ / "file"), "old");
    EXPECT_EQ(readFile(temporary_ / "other"), "new");
}

TEST_F(NewFileTest, HasTheGivenPermissionsUnderTheProcessesMask) {
    ::umask(027);
    NewFile file = written("file", "");
    EXPECT_FALSE(file.publish(NewFile::Existing::replace));
    EXPECT_EQ(permissions("file"), fs::perms(0640));
}

TEST_F(NewFileTest, TakesExactPermissionsAndATimeWhetherOpenOrClosed) {
    for (const bool isClosed : {false, true}) {
        NewFile file = written("file", "");
        if (isClosed) {
            EXPECT_FALSE(file.close());
        }
        EXPECT_FALSE(file.setPermissions(0666));
        EXPECT_FALSE(file.setModified(-1500000000));
        EXPECT_FALSE(file.flush());
        EXPECT_FALSE(file.publish(NewFile::Existing::replace));
        EXPECT_EQ(permissions("file"), fs::perms(0666));
        EXPECT_EQ(folder_.status("file")->modifiedNs, -1500000000);
    }
}

TEST_F(NewFileTest, CannotBeWrittenToAfterItWasClosed) {
    NewFile file = written("file", "first");
    EXPECT_FALSE(file.close());
    EXPECT_EQ(file.write(std::string("second")), code(std::errc::bad_file_descriptor));
    EXPECT_FALSE(file.publish(NewFile::Existing::replace));
    EXPECT_EQ(readFile(temporary_ / "file"), "first");
}

TEST_F(NewFileTest, GivesWhatWasWritten) {
    NewFile file = written("file", "contents");
    EXPECT_FALSE(file.close());
    sys::Outcome<sys::InputFile> contents = file.contents();
    std::array<char, 20> buffer = {};
    ASSERT_TRUE(contents);
    EXPECT_EQ(*contents->read(buffer), 8U);
}

TEST_F(NewFileTest, WaitsInAnyNumber) {
    rlimit old = {};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &old), 0);
    const rlimit few = {.rlim_cur = 64, .rlim_max = old.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    std::vector<NewFile> files;
    for (int index = 0; index < 200; ++index) {
        files.push_back(written("folder" + std::to_string(index) + "/file", "contents"));
        ASSERT_FALSE(files.back().close());
    }
    for (NewFile& file : files)
        ASSERT_FALSE(file.publish(NewFile::Existing::replace));
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &old), 0);
    EXPECT_THAT(listTree(temporary_.path()), SizeIs(400));
}

TEST_F(NewFileTest, IsNotMadeOutsideOrBehindALink) {
    fs::create_directory(temporary_ / "real");
    fs::create_directory_symlink("real", temporary_ / "link");
    for (const char* path : {"../file", "/file", "real/../file", "real/", "real//file", "."})
        EXPECT_EQ(errorOf(folder_.newFile(path, 0666)), code(std::errc::invalid_argument)) << path;
    EXPECT_EQ(errorOf(folder_.newFile("link/file", 0666)), code(throughLink));
    EXPECT_EQ(errorOf(folder_.newFile("link/new/file", 0666)), code(throughLink));
    EXPECT_THAT(listTree(temporary_.path()), ElementsAre("link", "real/"));
}

TEST_F(NewFileTest, IsNotPublishedThroughALinkThatTookItsFoldersPlace) {
    NewFile file = written("a/file", "contents");
    fs::create_directory(temporary_ / "outside");
    fs::rename(temporary_ / "a", temporary_ / "moved");
    fs::create_directory_symlink("outside", temporary_ / "a");
    EXPECT_EQ(file.publish(NewFile::Existing::replace), code(throughLink));
    EXPECT_THAT(listTree(temporary_ / "outside"), IsEmpty());
}

TEST_F(NewFileTest, LeavesLeftoversOfOthersAlone) {
    // The next names of this process, as a killed one with the same number would have left them.
    std::string first;
    {
        const NewFile file = written("file", "");
        first = listTree(temporary_.path()).front();
    }
    const std::size_t dash = first.find('-') + 1;
    const int number = std::stoi(first.substr(dash));
    const std::string taken = first.substr(0, dash) + std::to_string(number + 1) + ".qrv-tmp";
    writeFile(temporary_ / taken, "another's");
    EXPECT_FALSE(written("file", "mine").publish(NewFile::Existing::replace));
    EXPECT_EQ(readFile(temporary_ / taken), "another's");
    EXPECT_EQ(readFile(temporary_ / "file"), "mine");
}

}  // namespace
