#include <common/config/ConfigPath.h>
#include <platform/ut/ScopedFault.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

namespace {

namespace fs = std::filesystem;
using common::ConfigPath;
using qrv_test::TemporaryFolder;
using testing::IsEmpty;
using testing::IsSubsetOf;
using testing::IsSupersetOf;

constexpr int nobody = 65534;

/// "taken", or the error.
std::string outcome(const OdString& directory) {
    const Expected<ConfigPath> path = ConfigPath::get(directory);
    if (path)
        return path->path() == directory ? "taken" : "taken as " + path->path().toNarrow();
    return (path.error().code == 0 ? "" : "with a code: ") + path.error().message.toNarrow();
}

std::string notValid(const OdString& directory) {
    return "The path " + directory.toNarrow() + " is not valid.";
}

std::string notWritable(const OdString& directory) {
    return "The directory " + directory.toNarrow() + " is not writable.";
}

std::string notMade(const OdString& directory) {
    return "Could not create directory at: " + directory.toNarrow();
}

/// The outcome for a process that is not the super-user, who may write everywhere.
std::string outcomeWithoutPrivileges(const OdString& directory, const std::string& expected) {
    const pid_t child = fork();
    if (child == 0) {
        if (geteuid() == 0 &&
            (setgroups(0, nullptr) != 0 || setgid(nobody) != 0 || setuid(nobody) != 0))
            _exit(2);
        _exit(outcome(directory) == expected ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0)
        return expected;
    return "another outcome, status " + std::to_string(status);
}

TEST(ConfigPath, TakesAnExistingDirectoryAsItIsGiven) {
    const TemporaryFolder folder;
    EXPECT_EQ(outcome(folder.text()), "taken");
    EXPECT_EQ(outcome(folder.text() + L"/"), "taken");
    EXPECT_EQ(outcome(folder.text() + L"/./"), "taken");
    EXPECT_THAT(qrv_test::listTree(folder.path()), IsEmpty());
}

TEST(ConfigPath, MakesAMissingDirectoryWithItsParents) {
    const TemporaryFolder folder;
    EXPECT_EQ(outcome(folder.text("a/\xC3\xBC b/c")), "taken");
    EXPECT_EQ(qrv_test::listTree(folder.path()),
              (std::vector<std::string>{"a/", "a/\xC3\xBC b/", "a/\xC3\xBC b/c/"}));
}

TEST(ConfigPath, ComposesThePathOfTheFile) {
    const TemporaryFolder folder;
    const ConfigPath path = ConfigPath::get(folder.text()).value();
    EXPECT_EQ(path.configFile(), folder.text("directories.state"));
    EXPECT_EQ(ConfigPath::configFile(L"any where/"), L"any where//directories.state");
    EXPECT_EQ(ConfigPath::configFile(OdString()), L"/directories.state");
}

TEST(ConfigPath, IsMadeByItsCheckOnlyAndCanBeCopied) {
    EXPECT_FALSE((std::is_constructible_v<ConfigPath, OdString>));
    EXPECT_FALSE(std::is_default_constructible_v<ConfigPath>);
    EXPECT_TRUE(std::is_copy_assignable_v<ConfigPath>);
    EXPECT_TRUE(std::is_move_assignable_v<ConfigPath>);
}

TEST(ConfigPath, RefusesAnEmptyPath) {
    EXPECT_EQ(outcome(OdString()), "VC config path is empty.");
}

/// Whether `check` gives true in a process that has the folder for its root and current folder.
template <class Check>
bool holdsInARootOfItsOwn(const TemporaryFolder& folder, Check check) {
    const pid_t child = fork();
    if (child == 0)
        _exit(chroot(folder.path().c_str()) == 0 && chdir("/") == 0 && check() ? 0 : 1);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// A directory directly below the root was refused, also below a root that may be written: neither
// the root nor the current folder counted as a folder on the way.
TEST(ConfigPath, TakesAndMakesADirectoryDirectlyBelowTheRoot) {
    if (geteuid() != 0)
        GTEST_SKIP() << "only the super-user may have a root of his own";
    const TemporaryFolder folder;
    for (const wchar_t* directory : {L"/", L"//", L"/new", L"/home/.config/x", L"b", L"c/d", L"."})
        EXPECT_TRUE(holdsInARootOfItsOwn(folder, [&] { return outcome(directory) == "taken"; }))
            << OdString(directory).toNarrow();
    EXPECT_THAT(qrv_test::listTree(folder.path()),
                testing::ElementsAre("b/", "c/", "c/d/", "home/", "home/.config/",
                                     "home/.config/x/", "new/"));
}

// A drive that is not there has no root.
TEST(ConfigPath, RefusesAPathOfWhichNothingExists) {
    for (const wchar_t* directory : {L"/", L"."}) {
        const ut::ScopedFault nothing(2, ENOENT);
        EXPECT_EQ(outcome(directory), notValid(directory));
    }
}

TEST(ConfigPath, MakesADirectoryInTheCurrentFolder) {
    const TemporaryFolder folder;
    const fs::path before = fs::current_path();
    fs::current_path(folder.path());
    const std::string made = outcome(L"settings");
    fs::current_path(before);
    EXPECT_EQ(made, "taken");
    EXPECT_THAT(qrv_test::listTree(folder.path()), testing::ElementsAre("settings/"));
}

TEST(ConfigPath, RefusesADirectoryBelowARootThatCannotBeWritten) {
    for (const wchar_t* directory : {L"/qrv-no-such-folder", L"/qrv-no-such-folder/a/b"})
        EXPECT_EQ(outcomeWithoutPrivileges(directory, notWritable(directory)),
                  notWritable(directory));
}

TEST(ConfigPath, RefusesAPathBelowAFile) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "");
    EXPECT_EQ(outcome(folder.text("file")), notWritable(folder.text("file")));
    EXPECT_EQ(outcome(folder.text("file/a/b")), notWritable(folder.text("file/a/b")));
}

TEST(ConfigPath, RefusesADirectoryThatCannotBeWritten) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "locked");
    fs::permissions(folder.path(), fs::perms::all);
    fs::permissions(folder / "locked", fs::perms(0555));
    for (const char* name : {"locked", "locked/a", "locked/a/b"}) {
        const OdString directory = folder.text(name);
        EXPECT_EQ(outcomeWithoutPrivileges(directory, notWritable(directory)),
                  notWritable(directory));
    }
    EXPECT_EQ(outcomeWithoutPrivileges(folder.text("open/a"), "taken"), "taken");
}

TEST(ConfigPath, RefusesADirectoryThatCannotBeMade) {
    const TemporaryFolder folder;
    const OdString tooLong = folder.text("a/" + std::string(256, 'x'));
    EXPECT_EQ(outcome(tooLong), notMade(tooLong));
    const OdString withNul = folder.text() + L"/b" + OdString(std::wstring(1, L'\0')) + L"c";
    EXPECT_EQ(outcome(withNul), notMade(withNul));
    EXPECT_EQ(qrv_test::listTree(folder.path()), std::vector<std::string>{"a/"});
}

// It is the file's path of which it is asked whether it is a directory.
TEST(ConfigPath, IsNotCheckedWhenTheFileIsADirectory) {
    const TemporaryFolder folder;
    fs::create_directories(folder / "locked/directories.state");
    fs::permissions(folder.path(), fs::perms::all);
    fs::permissions(folder / "locked", fs::perms(0555));
    EXPECT_EQ(outcomeWithoutPrivileges(folder.text("locked"), "taken"), "taken");
}

TEST(ConfigPath, TellsEachFailureOfTheFileSystem) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "a");
    const OdString directory = folder.text("a/b");
    std::set<std::string> outcomes;
    for (int nth = 1;; ++nth) {
        const ut::ScopedFault fault(nth, EACCES);
        outcomes.insert(outcome(directory));
        fs::remove(folder / "a/b");
        if (!fault.hasFired())
            break;
    }
    EXPECT_THAT(outcomes, IsSupersetOf({std::string("taken"), notWritable(directory)}));
    EXPECT_THAT(outcomes, IsSubsetOf({std::string("taken"), notValid(directory),
                                      notWritable(directory), notMade(directory)}));
}

}  // namespace
