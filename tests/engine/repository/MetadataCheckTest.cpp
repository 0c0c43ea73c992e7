#include <engine/repository/LogEntry.h>
#include <engine/repository/MetadataCheck.h>
#include <engine/repository/OpenState.h>
#include <engine/worktree/TreeScan.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv::quotedName;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

class MetadataCheck : public testing::Test {
protected:
    /// Empty when nothing is wrong.
    std::string problem() const {
        const Expected<void> checked =
            qrv::checkMetadata(*sys::Folder::open(folder.path()), L"ROOT");
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

/// A repository that was looked at when it was opened. Then somebody lets a part of it lie
/// elsewhere, behind a link.
class ExchangedMetadata : public testing::Test {
protected:
    void exchange(const std::string& part, const std::string& contents) const {
        writeFile(outside / contents, "{}");
        fs::remove_all(metadata / part);
        fs::create_symlink(outside / part, metadata / part);
    }
    static std::string messageOf(const Expected<void>& result) {
        return result ? "" : result.error().message.toNarrow();
    }
    std::string refusal(const std::string& part) const {
        return "'" + (metadata / part).string() +
               "' is a symbolic link, and in a repository none is followed";
    }

    const TemporaryFolder folder;
    const TemporaryFolder outside;
    const common::RootPath root = *common::RootPath::get(folder.text(), true);
    const sys::Folder opened = *sys::Folder::open(folder.path());
    const fs::path metadata = folder / ".qrv";
};

TEST_F(ExchangedMetadata, GetsNoLineIntoAFileElsewhere) {
    exchange("qrv.log", "qrv.log");
    EXPECT_EQ(messageOf(qrv::addToLog(L"text", root, opened)), refusal("qrv.log"));
    EXPECT_EQ(qrv_test::readFile(outside / "qrv.log"), "{}");
}

TEST_F(ExchangedMetadata, GivesNoStateFromElsewhere) {
    exchange("qrv.state", "qrv.state");
    const qrv::Host host;
    const auto state = qrv::openState(root, opened, host);
    EXPECT_EQ(messageOf(state ? Expected<void>() : state.error()), refusal("qrv.state"));
}

TEST_F(ExchangedMetadata, GivesNoNamesFromElsewhere) {
    exchange("properties", "properties/ignore");
    qrv::TreeScan scan(root, opened);
    EXPECT_EQ(messageOf(scan.lookAt(nullptr)), refusal("properties"));
}

TEST(QuotedName, IsOneWordOfAShellAndOneLine) {
    EXPECT_EQ(quotedName(L"master"), OdString(L"'master'"));
    EXPECT_EQ(quotedName(L"$(touch${IFS}x);`id`"), OdString(L"'$(touch${IFS}x);`id`'"));
    EXPECT_EQ(quotedName(L"it's"), OdString(L"'it'\\''s'"));
    EXPECT_EQ(quotedName(L"a\nb\x1B"), OdString(L"'a\\x0Ab\\x1B'"));
}

}  // namespace
