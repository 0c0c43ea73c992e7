#include <cli/worktree/TreeScan.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <map>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_cli::TreeScan;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

/// A folder with many files in several folders, some of them ignored.
class ScannedTree : public testing::Test {
protected:
    ScannedTree() {
        writeFile(folder / ".qrv/properties/ignore", "*.bak\n");
        for (int number = 0; number < 1200; ++number)
            writeFile(folder / ("part" + std::to_string(number % 7)) / std::to_string(number),
                      std::string(static_cast<std::size_t>(number % 50), 'x'));
        writeFile(folder / "part1/old.bak", "");
        fs::create_symlink("part1/1", folder / "link");
    }

    const TemporaryFolder folder;
    const common::RootPath root = *common::RootPath::get(folder.text(), true);
    const sys::Folder rootFolder = *sys::Folder::open(folder.path());
};

TEST_F(ScannedTree, GivesEachPathWithItsSizeAndTime) {
    TreeScan scan(root, rootFolder);
    ASSERT_TRUE(scan.waitForPaths());
    scan.finish();
    ASSERT_EQ(scan.statuses().size(), scan.paths().size());
    std::map<std::string, sys::FileStatus> found;
    for (std::size_t place = 0; place < scan.paths().size(); ++place)
        found.emplace(scan.paths()[place].toNarrow(), scan.statuses()[place]);
    EXPECT_EQ(found.size(), 1202U);
    EXPECT_EQ(found.at("link").kind, sys::FileKind::link);
    EXPECT_EQ(found.at(".qrv/properties/ignore").sizeBytes, 6);
    for (int number = 0; number < 1200; ++number) {
        const std::string path = "part" + std::to_string(number % 7) + "/" + std::to_string(number);
        EXPECT_EQ(found.at(path).kind, sys::FileKind::regular) << path;
        EXPECT_EQ(found.at(path).sizeBytes, number % 50) << path;
        EXPECT_EQ(found.at(path).modifiedNs, rootFolder.status(path)->modifiedNs) << path;
    }
    EXPECT_TRUE(scan.messages().empty());
}

TEST_F(ScannedTree, TellsWhatIsWrongWithTheRules) {
    writeFile(folder / ".qrv/properties/ignore", "^(\n*.bak\n");
    TreeScan scan(root, rootFolder);
    ASSERT_TRUE(scan.waitForPaths());
    ASSERT_EQ(scan.messages().size(), 2U);
    EXPECT_EQ(scan.messages().front(),
              OdString(L"An error occurred while parsing the ignored file:"));
    EXPECT_EQ(scan.messages().back().find(L"Line 1: "), 0);
}

TEST_F(ScannedTree, EndsBeforeItIsGoneAlsoWhenNobodyAsks) {
    EXPECT_NO_FATAL_FAILURE(TreeScan(root, rootFolder));
}

}  // namespace
