#include <engine/worktree/TreeScan.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv::Baseline;
using qrv::BaselineBuilder;
using qrv::TreeScan;
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
        BaselineBuilder builder;
        for (const std::string& path : paths)
            builder.add(path, {});
        return std::make_shared<const Baseline>(builder.build());
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
    EXPECT_TRUE(scan.candidates().empty());
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
    std::sort(known.begin(), known.end());
    TreeScan scan(root, rootFolder);
    ASSERT_TRUE(scan.lookAt(baselineOf(known)));
    ASSERT_EQ(scan.candidates().size(), known.size());
    std::map<std::string, sys::FileStatus> found;
    for (const TreeScan::Known& candidates : scan.candidates())
        found.emplace(known.at(candidates.place), candidates.status);
    EXPECT_EQ(found.size(), known.size());
    EXPECT_EQ(found.at("gone").kind, sys::FileKind::other);
    EXPECT_EQ(found.at("gone/too").kind, sys::FileKind::other);
    EXPECT_EQ(found.at("link").kind, sys::FileKind::link);
    EXPECT_EQ(found.at("link/in").kind, sys::FileKind::other);
    EXPECT_EQ(found.at("part1").kind, sys::FileKind::folder);
    EXPECT_EQ(found.at("part1/old.bak").kind, sys::FileKind::regular);
    for (int number = 0; number < 1200; ++number)
        expectFile(number, found.at(pathOf(number)));
    ASSERT_EQ(scan.others().size(), 1U);
    EXPECT_EQ(scan.others().front().path, OdString(L".qrv/properties/ignore"));
}

TEST_F(ScannedTree, PassesOverFilesThatAreSeenToBeAsInHead) {
    BaselineBuilder builder;
    for (int number = 0; number < 1200; ++number) {
        qrv::KnownFile file;
        // Of every hundredth the size is another.
        file.sizeBytes = number % 50 + (number % 100 == 0 ? 1 : 0);
        file.note(*rootFolder.stamp(pathOf(number)));
        builder.add(pathOf(number), file);
    }
    const auto baseline = std::make_shared<const Baseline>(builder.build());
    TreeScan scan(root, rootFolder);
    ASSERT_TRUE(scan.lookAt(baseline));
    EXPECT_EQ(scan.candidates().size(), 12U);
    EXPECT_TRUE(
        std::is_sorted(scan.candidates().begin(), scan.candidates().end(),
                       [](const auto& one, const auto& other) { return one.place < other.place; }));
    for (const TreeScan::Known& candidates : scan.candidates())
        EXPECT_EQ(baseline->files()[candidates.place].sizeBytes, candidates.status.sizeBytes + 1);
    EXPECT_EQ(scan.others().size(), 2U);
}

// Which comes first, the baseline or the end of the listing, makes no difference.
TEST_F(ScannedTree, WaitsForALateBaseline) {
    TreeScan scan(root, rootFolder);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    ASSERT_TRUE(scan.lookAt(baselineOf({"part0/0", "part0/7", "part1/1"})));
    EXPECT_EQ(scan.others().size(), 1199U);
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
