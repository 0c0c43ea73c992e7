#include <common/config/ConfigData.h>
#include <tests/common/config/Configuration.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using common::ConfigData;
using common::ProjectInfo;
using qrv_test::Projects;
using qrv_test::shown;
using qrv_test::TemporaryFolder;

/// A registry that holds the paths, each with its place in the list as name and uid.
ConfigData registryOf(const std::vector<OdString>& paths) {
    ConfigData registry;
    for (std::size_t i = 0; i < paths.size(); ++i) {
        const OdString number = OdString::format(L"%i", i);
        registry.write().insert({paths[i], {number, number}});
    }
    return registry;
}

/// Whether `add` takes two spellings as one project.
bool isOneProject(const OdString& first, const OdString& second) {
    ConfigData registry;
    registry.add(first, L"first", L"1");
    registry.add(second, L"second", L"2");
    return registry.read().size() == 1;
}

TEST(ConfigData, AddsProjectsInTheOrderOfTheirPaths) {
    ConfigData registry;
    registry.add(L"/none/b", L"B", L"2");
    registry.add(L"/none/a", L"A", L"1");
    registry.add(L"/none/\u00FC", L"U", L"3");
    EXPECT_EQ(
        shown(registry.read()),
        (Projects{{"/none/a", "A", "1"}, {"/none/b", "B", "2"}, {"/none/\xC3\xBC", "U", "3"}}));
}

TEST(ConfigData, GivesTheSameMapForReadingAndWriting) {
    ConfigData registry;
    registry.write()[L"/x"] = {L"n", L"u"};
    EXPECT_EQ(registry.read().at(L"/x"), (ProjectInfo{L"n", L"u"}));
    EXPECT_EQ(&registry.read(), &registry.write());
}

TEST(ConfigData, KeepsTheSpellingOfAProjectThatIsAddedAgain) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "p");
    ConfigData registry;
    registry.add(folder.text("p"), L"old", L"1");
    registry.add(folder.text("p/../p/."), L"new", L"2");
    registry.add(folder.text() + L"//p/", L"newest", L"3");
    EXPECT_EQ(shown(registry.read()), (Projects{{folder.text("p").toNarrow(), "newest", "3"}}));
}

TEST(ConfigData, KnowsAnExistingFolderByEverySpelling) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "p");
    fs::create_directory(folder / "q");
    fs::create_directory_symlink(folder / "p", folder / "link");
    const OdString p = folder.text("p");
    EXPECT_TRUE(isOneProject(p, p));
    EXPECT_TRUE(isOneProject(p, p + L"/"));
    EXPECT_TRUE(isOneProject(p, folder.text("./p")));
    EXPECT_TRUE(isOneProject(p, folder.text("link")));
    EXPECT_FALSE(isOneProject(p, folder.text("q")));
    EXPECT_FALSE(isOneProject(p, folder.text("none")));
    EXPECT_FALSE(isOneProject(folder.text("none"), p));
}

TEST(ConfigData, TellsExistingFoldersApartByLetterCase) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "p");
    fs::create_directory(folder / "P");
    EXPECT_FALSE(isOneProject(folder.text("p"), folder.text("P")));
}

// An unplugged drive: what is missing is told apart by its path, without regard to letter case.
TEST(ConfigData, TellsMissingFoldersApartByTheirPaths) {
    EXPECT_FALSE(isOneProject(L"/none/a", L"/none/b"));
    EXPECT_FALSE(isOneProject(L"/none/a", L"/none/a/b"));
    EXPECT_FALSE(isOneProject(L"/none/a", L"none/a"));
    EXPECT_TRUE(isOneProject(L"/none/a", L"/none/a"));
    EXPECT_TRUE(isOneProject(L"/none/a", L"/NONE/A"));
    EXPECT_TRUE(isOneProject(L"/none/\u00FC", L"/none/\u00DC"));
    EXPECT_TRUE(isOneProject(L"/none/a", L"/none//x/../a/"));
    EXPECT_TRUE(
        isOneProject(L"none/a", OdString::fromNarrow(fs::current_path().string()) + L"/none/a"));
}

TEST(ConfigData, UpdatesTheFirstOfSeveralSpellings) {
    ConfigData registry = registryOf({L"/none/B", L"/none/b", L"/none/a"});
    registry.add(L"/none/b", L"new", L"9");
    EXPECT_EQ(shown(registry.read()),
              (Projects{{"/none/B", "new", "9"}, {"/none/a", "2", "2"}, {"/none/b", "1", "1"}}));
}

TEST(ConfigData, RemovesEverySpellingOfAProject) {
    ConfigData registry = registryOf({L"/none/B", L"/none/b", L"/none/a", L"/none/./B"});
    registry.remove(L"/NONE/b/");
    EXPECT_EQ(shown(registry.read()), (Projects{{"/none/a", "2", "2"}}));
}

TEST(ConfigData, RemovesAnExistingProjectByEverySpelling) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "p");
    fs::create_directory(folder / "q");
    fs::create_directory_symlink(folder / "p", folder / "link");
    ConfigData registry =
        registryOf({folder.text("p"), folder.text("link"), folder.text("q"), folder.text("none")});
    registry.remove(folder.text("q/../p"));
    EXPECT_EQ(shown(registry.read()), (Projects{{folder.text("none").toNarrow(), "3", "3"},
                                                {folder.text("q").toNarrow(), "2", "2"}}));
}

TEST(ConfigData, ChangesNothingWhenWhatIsRemovedIsNotThere) {
    ConfigData registry = registryOf({L"/none/a"});
    registry.remove(L"/none/b");
    registry.remove(OdString());
    EXPECT_EQ(shown(registry.read()), (Projects{{"/none/a", "0", "0"}}));
    ConfigData empty;
    empty.remove(L"/none/a");
    EXPECT_TRUE(empty.read().empty());
}

TEST(ConfigData, IsCopiedWhole) {
    ConfigData registry = registryOf({L"/none/a"});
    const ConfigData copy = registry;
    registry.remove(L"/none/a");
    EXPECT_EQ(shown(copy.read()), (Projects{{"/none/a", "0", "0"}}));
}

}  // namespace
