#include <common/repository/PropertyProjectName.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <type_traits>

namespace {

namespace fs = std::filesystem;

static_assert(std::is_copy_assignable_v<common::PropertyProjectName>);
static_assert(std::is_move_assignable_v<common::PropertyProjectName>);

class PropertyProjectName : public testing::Test {
protected:
    PropertyProjectName() { fs::create_directory(folder / ".qrv/properties"); }

    std::string file() const { return qrv_test::readFile(folder / ".qrv/properties/project_name"); }

    qrv_test::TemporaryFolder folder;
    common::RootPath root = common::RootPath::get(folder.text(), true).value();
};

}  // namespace

TEST_F(PropertyProjectName, IsEmptyBeforeItIsSet) {
    EXPECT_EQ(common::PropertyProjectName(root).getName(), QString());
}

TEST_F(PropertyProjectName, DoesNotTouchTheDiskWhenMade) {
    const common::PropertyProjectName name(root);
    EXPECT_THAT(qrv_test::listTree(folder.path()),
                testing::ElementsAre(".qrv/", ".qrv/properties/"));
}

TEST_F(PropertyProjectName, ComesBackWithTheLineBreakThatWasWritten) {
    const common::PropertyProjectName name(root);
    EXPECT_TRUE(name.setName("House 7"));
    EXPECT_EQ(file(), "House 7\n");
    EXPECT_EQ(name.getName(), "House 7\n");
}

TEST_F(PropertyProjectName, ReplacesALongerName) {
    const common::PropertyProjectName name(root);
    EXPECT_TRUE(name.setName("a long name"));
    EXPECT_TRUE(name.setName("b"));
    EXPECT_EQ(file(), "b\n");
}

TEST_F(PropertyProjectName, KeepsLineBreaksInside) {
    const common::PropertyProjectName name(root);
    EXPECT_TRUE(name.setName("\nHouse\n\n7\n"));
    EXPECT_EQ(file(), "\nHouse\n\n7\n\n");
    EXPECT_EQ(name.getName(), "\nHouse\n\n7\n\n");
}

TEST_F(PropertyProjectName, WritesAnEmptyNameAsAnEmptyLine) {
    const common::PropertyProjectName name(root);
    EXPECT_TRUE(name.setName(""));
    EXPECT_EQ(file(), "\n");
    EXPECT_EQ(name.getName(), "\n");
}

TEST_F(PropertyProjectName, WritesCarriageReturnsButReadsTextLines) {
    const common::PropertyProjectName name(root);
    EXPECT_TRUE(name.setName("House\r\n7"));
    EXPECT_EQ(file(), "House\r\n7\n");
    EXPECT_EQ(name.getName(), "House\n7\n");
}

TEST_F(PropertyProjectName, IsUtf8WhateverTheLocale) {
    const common::PropertyProjectName name(root);
    const QString text = QString::fromUtf8("Gr\xC3\xBC\xC3\x9F \xE5\xBB\xBA \xF0\x9F\x93\x90");
    EXPECT_TRUE(name.setName(text));
    EXPECT_EQ(file(), "Gr\xC3\xBC\xC3\x9F \xE5\xBB\xBA \xF0\x9F\x93\x90\n");
    EXPECT_EQ(name.getName(), text + "\n");
}

TEST_F(PropertyProjectName, CannotBeSetWithoutThePropertiesFolder) {
    fs::remove(folder / ".qrv/properties");
    EXPECT_FALSE(common::PropertyProjectName(root).setName("House"));
    EXPECT_THAT(qrv_test::listTree(folder.path()), testing::ElementsAre(".qrv/"));
}

TEST_F(PropertyProjectName, IsEmptyAndCannotBeSetWhereAFolderStands) {
    fs::create_directory(folder / ".qrv/properties/project_name");
    const common::PropertyProjectName name(root);
    EXPECT_EQ(name.getName(), QString());
    EXPECT_FALSE(name.setName("House"));
}

TEST_F(PropertyProjectName, ReachesAFolderWhoseNameIsNotUtf8) {
    const common::RootPath other = common::RootPath::get(folder.text("caf\xE9"), true).value();
    fs::create_directory(folder / "caf\xE9/.qrv/properties");
    const common::PropertyProjectName name(other);
    EXPECT_TRUE(name.setName("House"));
    EXPECT_EQ(qrv_test::readFile(folder / "caf\xE9/.qrv/properties/project_name"), "House\n");
    EXPECT_EQ(name.getName(), "House\n");
}

TEST_F(PropertyProjectName, CleansThePathOfTheFile) {
    // The folder that the detour leads through is gone, so only the cleaned path reaches the file.
    fs::create_directory(folder / "gone");
    const common::RootPath throughGone =
        common::RootPath::get(folder.text("gone/.."), false).value();
    fs::remove(folder / "gone");
    EXPECT_TRUE(common::PropertyProjectName(throughGone).setName("House"));
    EXPECT_EQ(file(), "House\n");
}

TEST_F(PropertyProjectName, CopiesNameTheSameFile) {
    const common::PropertyProjectName name(root);
    const common::PropertyProjectName copy = name;
    EXPECT_TRUE(copy.setName("House"));
    EXPECT_EQ(name.getName(), "House\n");
}
