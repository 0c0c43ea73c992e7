#include <engine/worktree/PathArgument.h>
#include <tests/engine/worktree/InsideARoot.h>
#include <tests/support/Files.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::writeFile;

/// Beside it lies another folder.
class PathArgument : public qrv_test::InsideARoot {
protected:
    PathArgument() {
        writeFile(folder / "root/plans/a.dwg", "");
        writeFile(folder / "elsewhere/b.dwg", "");
    }

    std::string path(const std::string& argument) const {
        const Expected<OdString> found = qrv::pathInRepository(root, argument);
        return found ? "[" + found->toNarrow() + "]" : found.error().message.toNarrow();
    }
    std::string outside(const std::string& argument) const {
        return "'" + argument + "' lies outside the repository '" + root.path().toNarrow() + "'";
    }
};

TEST_F(PathArgument, StartsFromTheCurrentFolder) {
    EXPECT_EQ(path("a.dwg"), "[plans/a.dwg]");
    EXPECT_EQ(path("missing/b.dwg"), "[plans/missing/b.dwg]");
    EXPECT_EQ(path("../list.csv"), "[list.csv]");
    EXPECT_EQ(path("./old/.././a.dwg"), "[plans/a.dwg]");
}

TEST_F(PathArgument, KnowsTheRootAndFolders) {
    EXPECT_EQ(path(".."), "[]");
    EXPECT_EQ(path("../"), "[]");
    EXPECT_EQ(path("."), "[plans]");
    EXPECT_EQ(path("../plans/"), "[plans]");
}

TEST_F(PathArgument, TakesAbsolutePaths) {
    EXPECT_EQ(path(root.path().toNarrow() + "/plans//a.dwg"), "[plans/a.dwg]");
    EXPECT_EQ(path(root.path().toNarrow()), "[]");
}

TEST_F(PathArgument, RefusesWhatLiesOutside) {
    for (const char* const argument :
         {"", "../..", "../../elsewhere/b.dwg", "/", "/etc/hosts", "../../root2"})
        EXPECT_EQ(path(argument), outside(argument));
}

TEST_F(PathArgument, FollowsLinksOnTheWay) {
    fs::create_directory_symlink(folder / "root", folder / "link");
    EXPECT_EQ(path((fs::canonical(folder.path()) / "link/plans/a.dwg").native()), "[plans/a.dwg]");
    fs::create_directory_symlink("plans", folder / "root/linked");
    EXPECT_EQ(path("../linked/a.dwg"), "[plans/a.dwg]");
}

TEST_F(PathArgument, KeepsTheNameOfALinkItself) {
    fs::create_symlink("/etc/hosts", folder / "root/hosts");
    EXPECT_EQ(path("../hosts"), "[hosts]");
}

TEST_F(PathArgument, KeepsTheNamesOfFilesWhoseFolderBecameALink) {
    fs::create_directory_symlink(folder / "elsewhere", folder / "root/old");
    EXPECT_EQ(path("../old/b.dwg"), "[old/b.dwg]");
}

TEST_F(PathArgument, KeepsEveryByte) {
    EXPECT_EQ(path("two  blanks\n\xE4.dwg"), "[plans/two  blanks\n\xE4.dwg]");
}

}  // namespace
