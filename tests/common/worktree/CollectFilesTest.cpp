#include <common/worktree/CollectFiles.h>
#include <platform/ut/ScopedFault.h>
#include <tests/common/worktree/TemporaryRepository.h>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <type_traits>
#include <vector>

namespace {

namespace fs = std::filesystem;

using common::CollectOptions;
using common::DirContents;
using qrv_test::narrow;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(std::is_copy_assignable_v<CollectOptions>);
static_assert(std::is_move_assignable_v<CollectOptions>);

class CollectDirContents : public testing::Test {
protected:
    void addFiles(const std::vector<std::string>& names) const {
        for (const std::string& name : names)
            qrv_test::writeFile(folder / name, "");
    }

    DirContents collect(const std::vector<std::regex>& excludes = {}) const {
        return common::collectDirContents(folder.text(), {true, true, false, excludes});
    }

    qrv_test::TemporaryFolder folder;
};

/// Folders nested so deeply that the path to the last does not fit any system call.
class DeepFolders {
public:
    DeepFolders(const fs::path& top, int levels) : start_(fs::current_path()), levels_(levels) {
        fs::current_path(top);
        for (int level = 0; level < levels_; ++level) {
            fs::create_directory("d");
            fs::current_path("d");
        }
        fs::current_path(start_);
        top_ = top;
    }
    DeepFolders(const DeepFolders&) = delete;
    DeepFolders& operator=(const DeepFolders&) = delete;
    ~DeepFolders() {
        fs::current_path(top_);
        for (int level = 0; level < levels_; ++level)
            fs::current_path("d");
        for (int level = 0; level < levels_; ++level) {
            fs::current_path("..");
            fs::remove("d");
        }
        fs::current_path(start_);
    }

private:
    fs::path start_;
    fs::path top_;
    int levels_;
};

}  // namespace

TEST(CollectOptions, StoresItsArguments) {
    const CollectOptions all(true, false, true, {std::regex("a")});
    EXPECT_TRUE(all.relative);
    EXPECT_FALSE(all.collectDirectories);
    EXPECT_EQ(all.listFlags, 4U);
    EXPECT_EQ(all.excludes.size(), 1U);
    const CollectOptions none(false, true, false, {});
    EXPECT_FALSE(none.relative);
    EXPECT_TRUE(none.collectDirectories);
    EXPECT_EQ(none.listFlags, 0U);
    EXPECT_THAT(none.excludes, IsEmpty());
}

TEST_F(CollectDirContents, ListsTheFilesOfAFolderBeforeItsSubFoldersDepthFirst) {
    addFiles({"z", "b/y", "b/a/x", "b/c/w", "a/v", "B", "c/u"});
    fs::create_directory(folder / "empty");
    const DirContents contents = collect();
    EXPECT_THAT(narrow(contents.files),
                ElementsAre("B", "z", "a/v", "b/y", "b/a/x", "b/c/w", "c/u"));
    EXPECT_THAT(narrow(contents.directories), ElementsAre("a", "b", "b/a", "b/c", "c", "empty"));
}

TEST_F(CollectDirContents, ListsFoldersOnlyWhenAsked) {
    addFiles({"a/b/c"});
    const DirContents contents =
        common::collectDirContents(folder.text(), {true, false, false, {}});
    EXPECT_THAT(narrow(contents.files), ElementsAre("a/b/c"));
    EXPECT_THAT(contents.directories, IsEmpty());
}

TEST_F(CollectDirContents, BeginsPathsWithTheFolderUnlessTheyAreRelative) {
    addFiles({"f", "a/g"});
    const std::string base = folder.path().string();
    for (const std::string& start : {base, base + "/", base + "/./"}) {
        const DirContents contents =
            common::collectDirContents(OdString::fromNarrow(start), {false, true, false, {}});
        EXPECT_THAT(narrow(contents.files), ElementsAre(start + "/f", start + "/a/g"));
        EXPECT_THAT(narrow(contents.directories), ElementsAre(start + "/a"));
    }
}

TEST_F(CollectDirContents, FindsTheSameWithTheExtendedListing) {
    addFiles({"f", "a/g"});
    const DirContents contents = common::collectDirContents(folder.text(), {true, true, true, {}});
    EXPECT_THAT(narrow(contents.files), ElementsAre("f", "a/g"));
    EXPECT_THAT(narrow(contents.directories), ElementsAre("a"));
}

TEST_F(CollectDirContents, LeavesOutNamesThatAnyExpressionMatchesWhole) {
    addFiles({"a", "ab", "b", "x/a", "a.d/f", "b.d/a", "b.d/f"});
    const DirContents contents = collect({std::regex("a"), std::regex("a\\..*")});
    EXPECT_THAT(narrow(contents.files), ElementsAre("ab", "b", "b.d/f"));
    EXPECT_THAT(narrow(contents.directories), ElementsAre("b.d", "x"));
}

TEST_F(CollectDirContents, MatchesTheBareNameOnly) {
    addFiles({"x/a"});
    EXPECT_THAT(narrow(collect({std::regex("x/a"), std::regex("x/.*")}).files), ElementsAre("x/a"));
}

TEST_F(CollectDirContents, HonoursTheFlagsOfTheExpressionsGiven) {
    addFiles({"a", "A"});
    EXPECT_THAT(narrow(collect({std::regex("a")}).files), ElementsAre("A"));
    EXPECT_THAT(narrow(collect({std::regex("a", std::regex::icase)}).files), IsEmpty());
}

TEST_F(CollectDirContents, LeavesOutNothingOfItself) {
    addFiles({".qrv/f", ".hidden", "..x/..."});
    EXPECT_THAT(narrow(collect().files), ElementsAre(".hidden", "..x/...", ".qrv/f"));
}

TEST_F(CollectDirContents, FindsNothingWhereNoFolderIs) {
    addFiles({"f"});
    for (const char* name : {"missing", "f", "f/x"}) {
        const DirContents contents =
            common::collectDirContents(folder.text(name), {true, true, false, {}});
        EXPECT_THAT(contents.files, IsEmpty()) << name;
        EXPECT_THAT(contents.directories, IsEmpty()) << name;
    }
}

TEST_F(CollectDirContents, KeepsTheBytesOfEveryName) {
    const std::vector<std::string> names = {
        "\xFF", "a\nb", "a\rb", "caf\xC3\xA9", "\xE9/\xED\xA0\x80", "\xF0\x9F\x93\x90",
        " ",    "%ls",  "a\\b"};
    addFiles(names);
    std::vector<std::string> found = narrow(collect().files);
    EXPECT_THAT(found, testing::UnorderedElementsAreArray(names));
    EXPECT_EQ(found.back(), "\xE9/\xED\xA0\x80");
}

TEST_F(CollectDirContents, NeitherLoopsNorLeavesTheTreeThroughLinks) {
    addFiles({"sub/f"});
    qrv_test::TemporaryFolder outside;
    qrv_test::writeFile(outside / "secret/file", "");
    fs::create_directory_symlink(folder.path(), folder / "sub/loop");
    fs::create_directory_symlink(".", folder / "sub/self");
    fs::create_directory_symlink(outside / "secret", folder / "out");
    fs::create_symlink("f", folder / "sub/link");
    fs::create_symlink("nothing", folder / "sub/broken");
    const DirContents contents = collect();
    EXPECT_THAT(narrow(contents.files), ElementsAre("sub/f", "sub/link"));
    EXPECT_THAT(narrow(contents.directories), ElementsAre("sub"));
}

TEST_F(CollectDirContents, ListsNeitherPipesNorDevices) {
    addFiles({"f"});
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    fs::create_symlink("/dev/null", folder / "device");
    EXPECT_THAT(narrow(collect().files), ElementsAre("f"));
}

TEST_F(CollectDirContents, SkipsAFolderThatCannotBeReadAndGoesOn) {
    addFiles({"a/f", "b/g", "c/h"});
    const std::size_t everything = collect().files.size();
    std::size_t partial = 0;
    for (int call = 1;; ++call) {
        const ut::ScopedFault fault(call, EACCES);
        const DirContents contents = collect();
        if (!fault.hasFired())
            break;
        partial += contents.files.size() > 0 && contents.files.size() < everything ? 1U : 0U;
    }
    EXPECT_GE(partial, 3U);
}

TEST_F(CollectDirContents, ReachesAFolderFiveHundredLevelsDeep) {
    std::string path;
    for (int level = 0; level < 500; ++level)
        path += "level" + std::string("/");
    addFiles({path + "f"});
    const DirContents contents = collect();
    EXPECT_THAT(narrow(contents.files), ElementsAre(path + "f"));
    EXPECT_EQ(contents.directories.size(), 500U);
}

TEST_F(CollectDirContents, SurvivesFoldersBeyondTheLongestPath) {
    const DeepFolders deep(folder.path(), 2500);
    addFiles({"e/f"});
    const DirContents contents = collect();
    EXPECT_THAT(narrow(contents.files), ElementsAre("e/f"));
    // How far down a path reaches is the system's affair.
    EXPECT_GE(contents.directories.size(), 2000U);
    EXPECT_EQ(contents.directories.back(), L"e");
}
