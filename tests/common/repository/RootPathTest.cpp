#include <common/repository/RootPath.h>
#include <platform/ut/ScopedFault.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <type_traits>
#include <vector>

namespace {

namespace fs = std::filesystem;

using common::RootPath;
using qrv_test::listTree;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_default_constructible_v<RootPath>);
static_assert(!std::is_constructible_v<RootPath, OdString, bool>);
static_assert(std::is_copy_assignable_v<RootPath> && std::is_move_assignable_v<RootPath>);

class RootPathTest : public testing::Test {
protected:
    std::string errorOf(const OdString& path, bool create) const {
        const Expected<RootPath> root = RootPath::get(path, create);
        return root ? "a root" : root.error().message.toNarrow();
    }

    qrv_test::TemporaryFolder folder;
    std::string base = folder.path().string();
};

}  // namespace

TEST_F(RootPathTest, OpensAFolderWithMetadataAndChangesNothing) {
    fs::create_directory(folder / ".qrv");
    const fs::file_time_type before = fs::last_write_time(folder.path());
    for (const bool create : {false, true}) {
        const Expected<RootPath> root = RootPath::get(folder.text(), create);
        ASSERT_TRUE(root) << create;
        EXPECT_EQ(root->path(), folder.text());
        EXPECT_FALSE(root->isNew()) << create;
    }
    EXPECT_THAT(listTree(folder.path()), ElementsAre(".qrv/"));
    EXPECT_EQ(fs::last_write_time(folder.path()), before);
}

TEST_F(RootPathTest, OpensNoMetadataOtherThanAFolder) {
    qrv_test::writeFile(folder / ".qrv", "a file");
    EXPECT_EQ(errorOf(folder.text(), false), "Path: " + base + " is not a qrv directory.");
    EXPECT_EQ(errorOf(folder.text(), true), "Not able to create a qrv directory in " + base);
    EXPECT_EQ(qrv_test::readFile(folder / ".qrv"), "a file");
}

TEST_F(RootPathTest, RefusesAFolderWithoutMetadata) {
    EXPECT_EQ(errorOf(folder.text(), false), "Path: " + base + " is not a qrv directory.");
    EXPECT_EQ(errorOf(folder.text("missing//"), false),
              "Path: " + base + "/missing// is not a qrv directory.");
    EXPECT_EQ(RootPath::get(folder.text(), false).error().code, 0);
    EXPECT_THAT(listTree(folder.path()), IsEmpty());
}

TEST_F(RootPathTest, DoesNotSearchTheFoldersAbove) {
    fs::create_directories(folder / ".qrv");
    fs::create_directories(folder / "sub");
    EXPECT_EQ(errorOf(folder.text("sub"), false), "Path: " + base + "/sub is not a qrv directory.");
}

TEST_F(RootPathTest, MakesAMissingFolderWithItsParents) {
    const Expected<RootPath> root = RootPath::get(folder.text("a/b/c"), true);
    ASSERT_TRUE(root);
    EXPECT_EQ(root->path(), folder.text("a/b/c"));
    EXPECT_TRUE(root->isNew());
    EXPECT_THAT(listTree(folder.path()), ElementsAre("a/", "a/b/", "a/b/c/", "a/b/c/.qrv/"));
    EXPECT_FALSE(RootPath::get(folder.text("a/b/c"), true).value().isNew());
}

TEST_F(RootPathTest, MakesMetadataInAnExistingFolder) {
    qrv_test::writeFile(folder / "plan.dwg", "drawing");
    const Expected<RootPath> root = RootPath::get(folder.text(), true);
    ASSERT_TRUE(root);
    EXPECT_TRUE(root->isNew());
    EXPECT_THAT(listTree(folder.path()), ElementsAre(".qrv/", "plan.dwg"));
}

TEST_F(RootPathTest, FailsWhereAFileStandsInTheWay) {
    qrv_test::writeFile(folder / "plan.dwg", "drawing");
    EXPECT_EQ(errorOf(folder.text("plan.dwg"), true),
              "Not able to create the version control folder: " + base + "/plan.dwg");
    EXPECT_EQ(errorOf(folder.text("plan.dwg/sub/"), true),
              "Not able to create the version control folder: " + base + "/plan.dwg/sub/");
    EXPECT_EQ(qrv_test::readFile(folder / "plan.dwg"), "drawing");
}

TEST_F(RootPathTest, KeepsTheProjectFolderWhenTheMetadataCannotBeMade) {
    bool keptTheFolder = false;
    for (int call = 1;; ++call) {
        const std::string name = "new" + std::to_string(call);
        bool hasFired = false;
        std::string error;
        {
            const ut::ScopedFault fault(call, EIO);
            error = errorOf(folder.text(name), true);
            hasFired = fault.hasFired();
        }
        if (!hasFired)
            break;
        if (error == "Not able to create a qrv directory in " + base + "/" + name)
            keptTheFolder = fs::is_directory(folder / name) && fs::is_empty(folder / name);
        else
            EXPECT_THAT(error,
                        testing::AnyOf("a root", "Not able to create the version control folder: " +
                                                     base + "/" + name));
    }
    EXPECT_TRUE(keptTheFolder);
}

TEST_F(RootPathTest, RefusesAPathWithANulInside) {
    fs::create_directory(folder / ".qrv");
    const OdString path = folder.text() + OdString(std::wstring(L"\0/x", 3));
    EXPECT_EQ(errorOf(path, false),
              "Path: " + base + std::string("\0/x", 3) + " is not a qrv directory.");
    EXPECT_EQ(errorOf(path, true),
              "Not able to create the version control folder: " + base + std::string("\0/x", 3));
    EXPECT_THAT(listTree(folder.path()), ElementsAre(".qrv/"));
}

TEST_F(RootPathTest, DropsTrailingSeparators) {
    for (const char* ending : {"", "/", "//", "////"}) {
        const Expected<RootPath> root = RootPath::get(folder.text() + ending, true);
        ASSERT_TRUE(root) << ending;
        EXPECT_EQ(root->path(), folder.text()) << ending;
    }
}

TEST_F(RootPathTest, KeepsWhatElseThePathHolds) {
    for (const char* name : {"a//b", "a/./b", "back\\slash\\", "caf\xE9", "line\nfeed", " "}) {
        const Expected<RootPath> root = RootPath::get(folder.text() + "/" + name, true);
        ASSERT_TRUE(root) << name;
        EXPECT_EQ(root->path().toNarrow(), base + "/" + name);
        EXPECT_TRUE(fs::is_directory(folder / (std::string(name) + "/.qrv"))) << name;
    }
}

TEST_F(RootPathTest, KeepsOneSeparatorOfAPathWithNothingElse) {
    if (geteuid() != 0)
        GTEST_SKIP() << "needs the right to change the root folder";
    EXPECT_EXIT(
        {
            const bool isInside = chroot(base.c_str()) == 0;
            const Expected<RootPath> root = RootPath::get(L"//", true);
            const bool isRight = root && root->path() == L"/" && root->qrvPath() == L"//.qrv" &&
                                 root->relativePathTo(root->pathTo(L"a")).value() == L"a";
            _exit(isInside && isRight ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_THAT(listTree(folder.path()), ElementsAre(".qrv/"));
}

TEST_F(RootPathTest, ComposesThePathsOfTheMetadata) {
    const RootPath root = RootPath::get(folder.text(), true).value();
    EXPECT_EQ(root.qrvPath().toNarrow(), base + "/.qrv");
    EXPECT_EQ(root.statePath().toNarrow(), base + "/.qrv/qrv.state");
    EXPECT_EQ(root.dbPath().toNarrow(), base + "/.qrv/qrv.db");
    EXPECT_EQ(root.propertiesPath().toNarrow(), base + "/.qrv/properties");
    EXPECT_EQ(root.logPath().toNarrow(), base + "/.qrv/qrv.log");
    EXPECT_THAT(listTree(folder.path()), ElementsAre(".qrv/"));
}

TEST_F(RootPathTest, ComposesTheMetadataFolderOfAnyFolderAsWritten) {
    EXPECT_EQ(RootPath::qrvPath(L"/Some/../Place/"), L"/Some/../Place//.qrv");
    EXPECT_EQ(RootPath::qrvPath(L""), L"/.qrv");
}

TEST_F(RootPathTest, PutsAnyTextBehindTheRoot) {
    const RootPath root = RootPath::get(folder.text(), true).value();
    for (const char* relative : {"", "a", "a/b", "/a", "../x", "//", "caf\xE9"})
        EXPECT_EQ(root.pathTo(OdString::fromNarrow(relative)).toNarrow(), base + "/" + relative);
}

TEST_F(RootPathTest, CutsTheRootOffPathsInsideAndBack) {
    const RootPath root = RootPath::get(folder.text(), true).value();
    for (const char* relative :
         {"", "a", "a/b", "/a", "a/", "../x", ".qrv/properties", "caf\xE9"}) {
        const OdString path = OdString::fromNarrow(base + "/" + relative);
        const Expected<OdString> cut = root.relativePathTo(path);
        ASSERT_TRUE(cut) << relative;
        EXPECT_EQ(cut->toNarrow(), relative);
        EXPECT_EQ(root.pathTo(*cut), path) << relative;
    }
}

TEST_F(RootPathTest, RefusesPathsThatAreNotWrittenAsInsideTheRoot) {
    const RootPath root = RootPath::get(folder.text("Root"), true).value();
    const std::vector<std::string> outside = {
        "",
        base + "/Root",
        base + "/Roo",
        base + "/Rootx/a",
        base + "/root/a",
        base + "//Root/a",
        base + "/Root\\a",
        "Root/a",
        "a",
    };
    for (const std::string& path : outside) {
        const Expected<OdString> cut = root.relativePathTo(OdString::fromNarrow(path));
        ASSERT_FALSE(cut) << path;
        EXPECT_EQ(cut.error().message.toNarrow(),
                  path + " is not located in the current repository");
        EXPECT_EQ(cut.error().code, 0);
    }
}

TEST_F(RootPathTest, IsAValue) {
    const RootPath root = RootPath::get(folder.text(), true).value();
    RootPath copy = RootPath::get(folder.text("other"), true).value();
    copy = root;
    const RootPath moved = std::move(copy);
    EXPECT_EQ(moved.path(), root.path());
    EXPECT_TRUE(moved.isNew());
}

TEST(RepositoryExt, IsTheBeginningOfADrawingsUrl) {
    EXPECT_EQ(common::repositoryExt(), L"tf");
}
