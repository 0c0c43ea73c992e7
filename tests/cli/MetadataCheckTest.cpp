#include <cli/LogEntry.h>
#include <cli/MetadataCheck.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_cli::quotedName;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

class MetadataCheck : public testing::Test {
protected:
    /// Empty when nothing is wrong.
    std::string problem() const {
        const Expected<void> checked =
            qrv_cli::checkMetadata(*sys::Folder::open(folder.path()), L"ROOT");
        return checked ? "" : checked.error().message.toNarrow();
    }

    const TemporaryFolder folder;
    const fs::path metadata = folder / ".qrv";
};

TEST_F(MetadataCheck, AcceptsWhatIsMissing) {
    EXPECT_EQ(problem(), "");
    fs::create_directory(metadata);
    EXPECT_EQ(problem(), "");
    fs::create_directory(metadata / "properties");
    EXPECT_EQ(problem(), "");
}

TEST_F(MetadataCheck, AcceptsFilesAndFoldersAndWhatMeansNothing) {
    for (const char* const file :
         {"qrv.state", "qrv.db", "qrv.log", "lock", "properties/ignore", "properties/project_name"})
        writeFile(metadata / file, "");
    fs::create_directory(metadata / "objects");
    fs::create_symlink("nowhere", metadata / "mine");
    EXPECT_EQ(problem(), "");
}

TEST_F(MetadataCheck, NamesALinkWhereverItLeads) {
    writeFile(folder / "target/file", "");
    for (const char* const target : {"target", "target/file", "nowhere"}) {
        fs::create_symlink(folder / target, metadata);
        EXPECT_EQ(problem(),
                  "'ROOT/.qrv' is a symbolic link, and in a repository none is followed");
        fs::remove(metadata);
    }
    for (const std::string name :
         {"qrv.state", "qrv.db", "qrv.log", "lock", "baseline", "objects.pack", "objects", "tf",
          "properties", "properties/ignore", "properties/project_name"}) {
        fs::create_directories((metadata / name).parent_path());
        fs::create_symlink("nowhere", metadata / name);
        EXPECT_EQ(problem(), "'ROOT/.qrv/" + name +
                                 "' is a symbolic link, and in a repository none is followed");
        fs::remove_all(metadata);
    }
}

TEST_F(MetadataCheck, NamesWhatIsNotOfItsKind) {
    writeFile(metadata, "");
    EXPECT_EQ(problem(), "'ROOT/.qrv' is not a folder");
    fs::remove(metadata);
    writeFile(metadata / "properties", "");
    EXPECT_EQ(problem(), "'ROOT/.qrv/properties' is not a folder");
    fs::remove(metadata / "properties");
    ASSERT_EQ(::mkfifo((metadata / "qrv.log").c_str(), 0600), 0);
    EXPECT_EQ(problem(), "'ROOT/.qrv/qrv.log' is not a regular file");
}

TEST(QuotedName, IsOneWordOfAShellAndOneLine) {
    EXPECT_EQ(quotedName(L"master"), OdString(L"'master'"));
    EXPECT_EQ(quotedName(L"$(touch${IFS}x);`id`"), OdString(L"'$(touch${IFS}x);`id`'"));
    EXPECT_EQ(quotedName(L"it's"), OdString(L"'it'\\''s'"));
    EXPECT_EQ(quotedName(L"a\nb\x1B"), OdString(L"'a\\x0Ab\\x1B'"));
}

}  // namespace
