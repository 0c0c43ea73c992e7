#include <platform/ut/FileName.h>
#include <platform/ut/ScopedFault.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::TemporaryFolder;
using ut::FileName;

constexpr int anyKind = 0x1FFF;

std::string textOf(const FileName& name) {
    return name.getFullPath().toNarrow();
}

TEST(FileName, KeepsItsPathAsGiven) {
    EXPECT_EQ(textOf(FileName()), "");
    EXPECT_EQ(textOf(FileName(L"a//b/./..\\/")), "a//b/./..\\/");
}

TEST(FileName, JoinsFolderBaseNameAndExtension) {
    EXPECT_EQ(textOf(FileName(L"/a/b", L"c", L"dwg")), "/a/b/c.dwg");
    EXPECT_EQ(textOf(FileName(L"/a/b/", L"c", L"dwg")), "/a/b/c.dwg");
    EXPECT_EQ(textOf(FileName(L"/", L"c", L"")), "/c");
    EXPECT_EQ(textOf(FileName(L"", L"c", L"dwg")), "c.dwg");
    EXPECT_EQ(textOf(FileName(L"a", L"c.tar", L"gz")), "a/c.tar.gz");
}

TEST(FileName, KnowsTheSlashAsTheOnlySeparator) {
    EXPECT_EQ(FileName::getPathSeparator(), L'/');
    EXPECT_TRUE(FileName::isPathSeparator(L'/'));
    EXPECT_FALSE(FileName::isPathSeparator(L'\\'));
    EXPECT_FALSE(FileName::isPathSeparator(L'\0'));
}

TEST(FileName, CountsAndRemovesComponents) {
    struct Case {
        const char* path;
        int count;
        const char* withoutLast;
    };
    const Case cases[] = {
        {"", 0, ""},          {"/", 1, ""},          {"//", 1, ""},
        {"a", 2, "."},        {"/a", 2, "/"},        {"//a", 2, "/"},
        {"a/", 2, "."},       {"/a/", 2, "/"},       {"a/b", 3, "a"},
        {"/a/b", 3, "/a"},    {"/a/b/", 3, "/a"},    {"a//b", 3, "a"},
        {"/a//b//", 3, "/a"}, {"./a", 2, "."},       {"a/..", 3, "a"},
        {"a\\b", 2, "."},     {"/a/b/c", 4, "/a/b"}, {"a b/ /c", 4, "a b/ "},
        {".", 1, ""},         {"./", 1, ""},         {"..", 2, "."},
        {"/.", 2, "/"},
    };
    for (const Case& entry : cases) {
        FileName name{OdString(entry.path)};
        EXPECT_EQ(name.getDirCount(), entry.count) << entry.path;
        name.removeLastDir();
        EXPECT_EQ(textOf(name), entry.withoutLast) << entry.path;
        EXPECT_EQ(name.getDirCount(), entry.count == 0 ? 0 : entry.count - 1) << entry.path;
    }
}

TEST(FileName, FindsTheExtension) {
    struct Case {
        const char *path, *extension;
    };
    const Case cases[] = {
        {"a.dwg", "dwg"},    {"/x.y/a", ""},
        {"/x.y/a.b.c", "c"}, {"", ""},
        {".bak", ""},        {"a/.bak", ""},
        {"a.", ""},          {"a..", ""},
        {"..", ""},          {".", ""},
        {"..a", "a"},        {"a. ", " "},
        {"a.b/", "b"},       {"a.\xC3\xA4", "\xC3\xA4"},
        {"a.b\\c", "b\\c"},  {"/", ""},
    };
    for (const Case& entry : cases) {
        const FileName name{OdString(entry.path)};
        EXPECT_EQ(name.getExt().toNarrow(), entry.extension) << entry.path;
        EXPECT_EQ(name.hasExt(), *entry.extension != '\0') << entry.path;
    }
}

TEST(FileName, BecomesAbsolute) {
    const std::string current = fs::current_path().string();
    struct Case {
        const char* path;
        std::string absolute;
    };
    const Case cases[] = {
        {"", ""},
        {"a", current + "/a"},
        {"./a/../b/", current + "/a/../b"},
        {".", current},
        {"..", current + "/.."},
        {"/", "/"},
        {"//a//b/", "/a/b"},
        {"/a/./b/../c", "/a/b/../c"},
        {"/../../a", "/../../a"},
        {"/a/..", "/a/.."},
        {"/./.", "/"},
        {"/a/.../..b", "/a/.../..b"},
        {"/missing/\xFF", "/missing/\xFF"},
    };
    for (const Case& entry : cases) {
        FileName name{OdString(entry.path)};
        name.makeAbsolute();
        EXPECT_EQ(textOf(name), entry.absolute) << entry.path;
    }
}

TEST(FileName, StaysRelativeWhenTheCurrentFolderIsUnknown) {
    FileName name(L"a/../b");
    const ut::ScopedFault fault(1, ENOENT);
    name.makeAbsolute();
    EXPECT_TRUE(fault.hasFired());
    EXPECT_EQ(textOf(name), "a/../b");
}

TEST(FileName, ExistsWhateverItNames) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "");
    fs::create_directory(folder / "folder");
    fs::create_symlink("nowhere", folder / "broken");
    fs::create_symlink("loop", folder / "loop");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0666), 0);
    fs::create_symlink("file", folder / "link");
    for (const char* name : {"file", "folder", "folder/", "link", "loop", "pipe", ""})
        EXPECT_TRUE(FileName(folder.text(name)).exists(anyKind)) << name;
    for (const char* name : {"missing", "file/below", "FILE", "broken", "broken/"})
        EXPECT_FALSE(FileName(folder.text(name)).exists(anyKind)) << name;
    EXPECT_FALSE(FileName(folder.text(std::string(256, 'x'))).exists(anyKind));
    EXPECT_FALSE(FileName(folder.text("file")).exists(0)) << "no kind is wanted";
}

// A file was made over one that is there, on a share that was not to be reached for a moment: every
// failure of the look counted as "there is none".
TEST(FileName, IsMissingOnlyWhenSomebodyCouldLook) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "");
    const FileName file(folder.text("file"));
    for (const int errorNumber : {EIO, EACCES, ESTALE, ENOMEM, ETIMEDOUT}) {
        const ut::ScopedFault fault(1, errorNumber);
        EXPECT_TRUE(file.exists(anyKind)) << errorNumber;
        EXPECT_TRUE(fault.hasFired());
    }
    for (const int errorNumber : {ENOENT, ENOTDIR}) {
        const ut::ScopedFault fault(1, errorNumber);
        EXPECT_FALSE(file.exists(anyKind)) << errorNumber;
    }
}

TEST(FileName, MakesAFolder) {
    const TemporaryFolder folder;
    EXPECT_TRUE(FileName::mkdir(folder.text("a"), 0777, false));
    EXPECT_TRUE(fs::is_directory(folder / "a"));
    EXPECT_TRUE(FileName::mkdir(folder.text("a"), 0777, false)) << "it is there already";
    EXPECT_FALSE(FileName::mkdir(folder.text("b/c"), 0777, false)) << "its parent is missing";
    EXPECT_EQ(qrv_test::listTree(folder.path()), std::vector<std::string>{"a/"});
}

TEST(FileName, MakesTheFoldersAboveWhenAsked) {
    const TemporaryFolder folder;
    EXPECT_TRUE(FileName::mkdir(folder.text("a//b/./c/"), 0777, true));
    EXPECT_TRUE(FileName::mkdir(folder.text("a/b/d"), 0777, true));
    EXPECT_TRUE(FileName::mkdir(folder.text("a/b/d"), 0777, true)) << "it is there already";
    EXPECT_EQ(qrv_test::listTree(folder.path()),
              (std::vector<std::string>{"a/", "a/b/", "a/b/c/", "a/b/d/"}));
    EXPECT_TRUE(FileName::mkdir(L"/", 0777, true));
    EXPECT_FALSE(FileName::mkdir(L"", 0777, true));
}

TEST(FileName, MakesAFolderBelowALinkToOne) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "real");
    fs::create_directory_symlink("real", folder / "link");
    EXPECT_TRUE(FileName::mkdir(folder.text("link/a/b"), 0777, true));
    EXPECT_TRUE(FileName::mkdir(folder.text("link"), 0777, true));
    EXPECT_TRUE(fs::is_directory(folder / "real/a/b"));
}

TEST(FileName, DoesNotMakeAFolderWhereSomethingElseStands) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "old");
    fs::create_symlink("nowhere", folder / "broken");
    for (const char* name : {"file", "file/below/it", "broken", "broken/below"}) {
        EXPECT_FALSE(FileName::mkdir(folder.text(name), 0777, true)) << name;
        EXPECT_FALSE(FileName::mkdir(folder.text(name), 0777, false)) << name;
    }
    EXPECT_EQ(qrv_test::readFile(folder / "file"), "old");
    EXPECT_EQ(qrv_test::listTree(folder.path()), (std::vector<std::string>{"broken", "file"}));
}

TEST(FileName, MakesFoldersWithTheGivenPermissionsLessTheMask) {
    const TemporaryFolder folder;
    const mode_t old = umask(027);
    EXPECT_TRUE(FileName::mkdir(folder.text("a/b"), 0777, true));
    EXPECT_TRUE(FileName::mkdir(folder.text("c"), 0700, false));
    umask(old);
    EXPECT_EQ(fs::status(folder / "a").permissions(), fs::perms(0750));
    EXPECT_EQ(fs::status(folder / "a/b").permissions(), fs::perms(0750));
    EXPECT_EQ(fs::status(folder / "c").permissions(), fs::perms(0700));
}

TEST(FileName, SaysSoWhenAFolderCannotBeMade) {
    int failures = 0;
    for (int nth = 1;; ++nth) {
        const TemporaryFolder folder;
        const ut::ScopedFault fault(nth, ENOSPC);
        const bool isMade = FileName::mkdir(folder.text("a/b"), 0777, true);
        EXPECT_EQ(isMade, fs::is_directory(folder / "a/b")) << "call " << nth;
        failures += isMade ? 0 : 1;
        if (!fault.hasFired())
            break;
    }
    EXPECT_GE(failures, 2) << "at least one for each folder that had to be made";
}

// Takes the rights of root from this process for a scope, where it has them.
class ScopedOrdinaryUser {
public:
    ScopedOrdinaryUser() : old_(geteuid()) {
        if (old_ == 0) {
            EXPECT_EQ(seteuid(65534), 0);
        }
    }
    ScopedOrdinaryUser(const ScopedOrdinaryUser&) = delete;
    ScopedOrdinaryUser& operator=(const ScopedOrdinaryUser&) = delete;
    ~ScopedOrdinaryUser() { EXPECT_EQ(seteuid(old_), 0); }

private:
    uid_t old_;
};

TEST(FileName, IsWritableWhenFilesCanBeMadeInTheFolder) {
    const TemporaryFolder folder;
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    for (const unsigned mode : {0777U, 0555U, 0666U}) {
        const fs::path path = folder / std::to_string(mode);
        fs::create_directory(path);
        ASSERT_EQ(chmod(path.c_str(), mode), 0);
    }
    qrv_test::writeFile(folder / "file", "");
    fs::permissions(folder / "file", fs::perms::all);
    const ScopedOrdinaryUser user;
    EXPECT_TRUE(FileName(folder.text(std::to_string(0777U))).isDirWritable());
    EXPECT_FALSE(FileName(folder.text(std::to_string(0555U))).isDirWritable());
    EXPECT_FALSE(FileName(folder.text(std::to_string(0666U))).isDirWritable());
    EXPECT_FALSE(FileName(folder.text("file")).isDirWritable());
    EXPECT_FALSE(FileName(folder.text("missing")).isDirWritable());
}

TEST(FileName, IsNotWritableWhenTheSystemCannotTell) {
    const TemporaryFolder folder;
    for (const int nth : {1, 2}) {
        const ut::ScopedFault fault(nth, EIO);
        EXPECT_FALSE(FileName(folder.text()).isDirWritable()) << nth;
        EXPECT_TRUE(fault.hasFired()) << nth;
    }
    EXPECT_TRUE(FileName(folder.text()).isDirWritable());
}

std::int64_t ticksOfModification(const fs::path& file, timespec time) {
    const timespec times[] = {{.tv_sec = 1, .tv_nsec = 0}, time};
    EXPECT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
    ut::DateTime modification;
    EXPECT_TRUE(FileName(OdString(file.c_str())).getTimes(nullptr, &modification, nullptr));
    return modification.getTicks();
}

TEST(FileName, TellsTheTimeOfModificationInTicks) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "");
    EXPECT_EQ(
        ticksOfModification(folder / "file", {.tv_sec = 1'700'000'000, .tv_nsec = 123'456'789}),
        133'444'736'001'234'567);
    EXPECT_EQ(ticksOfModification(folder / "file", {.tv_sec = 0, .tv_nsec = 0}),
              116'444'736'000'000'000);
    EXPECT_EQ(ticksOfModification(folder / "file", {.tv_sec = -1, .tv_nsec = 999'999'999}),
              116'444'735'999'999'999);
    EXPECT_EQ(ticksOfModification(folder / "file", {.tv_sec = -86'400, .tv_nsec = 0}),
              116'443'872'000'000'000);
}

TEST(FileName, TellsEachTimeThatIsAskedFor) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "");
    const timespec times[] = {{.tv_sec = 1, .tv_nsec = 0}, {.tv_sec = 2, .tv_nsec = 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, (folder / "file").c_str(), times, 0), 0);
    struct stat status = {};
    ASSERT_EQ(stat((folder / "file").c_str(), &status), 0);
    ut::DateTime access, modification, creation;
    ASSERT_TRUE(FileName(folder.text("file")).getTimes(&access, &modification, &creation));
    EXPECT_EQ(access, ut::DateTime::fromUnixTime(1, 0));
    EXPECT_EQ(modification, ut::DateTime::fromUnixTime(2, 0));
    EXPECT_EQ(creation, ut::DateTime::fromUnixTime(status.st_ctim.tv_sec, status.st_ctim.tv_nsec));
    EXPECT_TRUE(FileName(folder.text("file")).getTimes(nullptr, nullptr, nullptr));
}

TEST(FileName, ChangesNoTimeWhenTheFileCannotBeAsked) {
    const TemporaryFolder folder;
    ut::DateTime access(1), modification(2), creation(3);
    EXPECT_FALSE(FileName(folder.text("missing")).getTimes(&access, &modification, &creation));
    {
        const ut::ScopedFault fault(1, EIO);
        EXPECT_FALSE(FileName(folder.text()).getTimes(&access, &modification, &creation));
    }
    EXPECT_EQ(access, ut::DateTime(1));
    EXPECT_EQ(modification, ut::DateTime(2));
    EXPECT_EQ(creation, ut::DateTime(3));
}

}  // namespace
