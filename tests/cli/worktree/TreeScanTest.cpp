#include <cli/worktree/TreeScan.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv_cli::Baseline;
using qrv_cli::SizedFile;
using qrv_cli::TreeScan;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

/// A folder with many files in several folders, some of them ignored.
class ScannedTree : public testing::Test {
protected:
    ScannedTree() {
        writeFile(folder / ".qrv/properties/ignore", "*.bak\n");
        for (int number = 0; number < 1200; ++number)
            writeFile(folder / pathOf(number), std::string(sizeOf(number), 'x'));
        writeFile(folder / "part1/old.bak", "");
        fs::create_symlink("part1/1", folder / "link");
    }

    static std::string pathOf(int number) {
        return "part" + std::to_string(number % 7) + "/" + std::to_string(number);
    }
    static std::size_t sizeOf(int number) { return static_cast<std::size_t>(number % 50); }

    static std::shared_ptr<const Baseline> baselineOf(const std::vector<std::string>& paths) {
        std::vector<SizedFile> files;
        for (const std::string& path : paths)
            files.push_back({OdString::fromNarrow(path), 0});
        return std::make_shared<const Baseline>(Baseline::of(files, {}, std::nullopt));
    }
    void expectFile(int number, const sys::FileStatus& status) const {
        EXPECT_EQ(status.kind, sys::FileKind::regular) << number;
        EXPECT_EQ(status.sizeBytes, number % 50) << number;
        EXPECT_EQ(status.modifiedNs, rootFolder.status(pathOf(number))->modifiedNs) << number;
    }

    const TemporaryFolder folder;
    const common::RootPath root = *common::RootPath::get(folder.text(), true);
    const sys::Folder rootFolder = *sys::Folder::open(folder.path());
};

TEST_F(ScannedTree, GivesWhatIsNotKnownWithItsSizeAndTimeInOrder) {
    TreeScan scan(root, rootFolder);
    ASSERT_TRUE(scan.lookAt(baselineOf({})));
    EXPECT_TRUE(scan.known().empty());
    std::map<std::string, sys::FileStatus> found;
    std::vector<OdString> paths;
    for (const TreeScan::Other& other : scan.others()) {
        found.emplace(other.path.toNarrow(), other.status);
        paths.push_back(other.path);
    }
    EXPECT_TRUE(std::is_sorted(paths.begin(), paths.end()));
    EXPECT_EQ(found.size(), 1202U);
    EXPECT_EQ(found.at("link").kind, sys::FileKind::link);
    EXPECT_EQ(found.at(".qrv/properties/ignore").sizeBytes, 6);
    for (int number = 0; number < 1200; ++number)
        expectFile(number, found.at(pathOf(number)));
    EXPECT_TRUE(scan.messages().empty());
}

TEST_F(ScannedTree, GivesOfEachKnownFileWhatLiesThere) {
    std::vector<std::string> known = {"gone",    "gone/too", "link",
                                      "link/in", "part1",    "part1/old.bak"};
    for (int number = 0; number < 1200; ++number)
        known.push_back(pathOf(number));
    TreeScan scan(root, rootFolder);
    ASSERT_TRUE(scan.lookAt(baselineOf(known)));
    ASSERT_EQ(scan.known().size(), known.size());
    const sys::FileKind kinds[] = {sys::FileKind::other,  sys::FileKind::other,
                                   sys::FileKind::link,   sys::FileKind::other,
                                   sys::FileKind::folder, sys::FileKind::regular};
    for (std::size_t place = 0; place < std::size(kinds); ++place)
        EXPECT_EQ(scan.known()[place].kind, kinds[place]) << known[place];
    for (int number = 0; number < 1200; ++number)
        expectFile(number, scan.known()[std::size(kinds) + static_cast<std::size_t>(number)]);
    ASSERT_EQ(scan.others().size(), 1U);
    EXPECT_EQ(scan.others().front().path, OdString(L".qrv/properties/ignore"));
}

TEST_F(ScannedTree, TellsWhatIsWrongWithTheRules) {
    writeFile(folder / ".qrv/properties/ignore", "^(\n*.bak\n");
    TreeScan scan(root, rootFolder);
    ASSERT_TRUE(scan.lookAt(baselineOf({})));
    ASSERT_EQ(scan.messages().size(), 2U);
    EXPECT_EQ(scan.messages().front(),
              OdString(L"An error occurred while parsing the ignored file:"));
    EXPECT_EQ(scan.messages().back().find(L"Line 1: "), 0);
}

TEST_F(ScannedTree, EndsBeforeItIsGoneAlsoWhenNobodyLooks) {
    EXPECT_NO_FATAL_FAILURE(TreeScan(root, rootFolder));
}

}  // namespace
