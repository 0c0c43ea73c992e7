#include <common/config/ConfigData.h>
#include <platform/qut/toQt.h>
#include <tests/common/config/Configuration.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QFileInfo>
#include <QString>
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

// One of two projects was lost when the second was added: Qt sees no folder whose name is not valid
// in the codec of the locale, and what is missing was told apart without letter case.
TEST(ConfigData, TellsFoldersThatQtCannotSeeApartByWhatTheyAre) {
    const TemporaryFolder folder;
    for (const char* name : {"\xFF"
                             "a",
                             "\xFF"
                             "A",
                             "\xFF"
                             "b"})
        fs::create_directory(folder / name);
    fs::create_directory_symlink(folder /
                                     "\xFF"
                                     "a",
                                 folder /
                                     "\xFF"
                                     "link");
    const auto path = [&](const char* name) {
        return OdString::fromNarrow((folder / name).string());
    };
    EXPECT_FALSE(isOneProject(path("\xFF"
                                   "a"),
                              path("\xFF"
                                   "A")));
    EXPECT_FALSE(isOneProject(path("\xFF"
                                   "a"),
                              path("\xFF"
                                   "b")));
    EXPECT_FALSE(isOneProject(path("\xFF"
                                   "a"),
                              path("\xFF"
                                   "none")));
    EXPECT_TRUE(isOneProject(path("\xFF"
                                  "a"),
                             path("\xFF"
                                  "a")));
    EXPECT_TRUE(isOneProject(path("\xFF"
                                  "a"),
                             path("\xFF"
                                  "b/../\xFF"
                                  "a/.")));
    EXPECT_TRUE(isOneProject(path("\xFF"
                                  "a"),
                             path("\xFF"
                                  "link")));
    EXPECT_TRUE(isOneProject(path("\xFF"
                                  "none"),
                             path("\xFF"
                                  "NONE")));
}

// The same for a folder that may not be looked at: nobody knows whether the two are one.
TEST(ConfigData, TellsFoldersOutOfReachApartByLetterCase) {
    if (geteuid() != 0)
        GTEST_SKIP() << "only the super-user can become somebody else";
    const TemporaryFolder folder;
    fs::create_directories(folder / "closed/p");
    fs::permissions(folder.path(), fs::perms::all);
    fs::permissions(folder / "closed", fs::perms::owner_all);
    const pid_t child = fork();
    if (child == 0) {
        const OdString path = folder.text("closed/p");
        const bool isSomebody = setgid(65534) == 0 && setuid(65534) == 0;
        const bool isRight = !isOneProject(path, folder.text("closed/P")) &&
                             isOneProject(path, folder.text("closed/./p"));
        _exit(isSomebody && isRight ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

// Two empty paths were one project, where Qt, whose answer counts, says no.
TEST(ConfigData, AsksQtAboutAnEmptyPath) {
    const OdString empty;
    for (const wchar_t* other : {L"", L".", L"/none/a", L"/"}) {
        const bool isSame = QFileInfo(QString("")) == QFileInfo(qut::toQt(OdString(other)));
        ConfigData registry;
        registry.add(empty, L"first", L"1");
        registry.add(other, L"second", L"2");
        EXPECT_EQ(registry.read().at(empty).name, isSame ? L"second" : L"first")
            << OdString(other).toNarrow();
        registry.remove(other);
        EXPECT_EQ(registry.read().count(empty), isSame ? 0U : 1U) << OdString(other).toNarrow();
    }
}

// A NUL in a registered path made Qt complain on the standard error of the host.
TEST(ConfigData, PrintsNothingAboutAPathThatNamesNothing) {
    const OdString withNul(std::wstring(L"/none/a\0b", 9));
    ConfigData registry = registryOf({L"/none/a", withNul});
    testing::internal::CaptureStderr();
    registry.add(L"/none/a", L"new", L"9");
    registry.add(withNul, L"newer", L"10");
    registry.remove(L"/none/b");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(registry.read().at(L"/none/a").name, L"new");
    EXPECT_EQ(registry.read().at(withNul).name, L"newer");
    registry.remove(withNul);
    EXPECT_EQ(shown(registry.read()), (Projects{{"/none/a", "new", "9"}}));
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
