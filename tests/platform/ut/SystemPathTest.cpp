#include <platform/kernel/OdError.h>
#include <platform/ut/Dir.h>
#include <platform/ut/File.h>
#include <platform/ut/FileName.h>
#include <platform/ut/ReadEntireFile.h>
#include <platform/ut/TextFile.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <limits.h>

#include <string>

namespace {

using qrv_test::TemporaryFolder;

// Every operation on `path`, which must name nothing for any of them.
void expectRefused(const OdString& path) {
    EXPECT_FALSE(ut::Dir(path).isOpened());
    EXPECT_TRUE(ut::Dir(path).list(OdString(), 3).empty());
    EXPECT_FALSE(ut::Dir::exists(path));
    EXPECT_FALSE(ut::Dir::create(path));
    EXPECT_FALSE(ut::FileName::mkdir(path, 0777, false));
    EXPECT_FALSE(ut::FileName::mkdir(path, 0777, true));
    EXPECT_FALSE(ut::FileName(path).exists(0x1FFF));
    EXPECT_FALSE(ut::FileName(path).isDirWritable());
    EXPECT_FALSE(ut::FileName(path).getTimes(nullptr, nullptr, nullptr));
    EXPECT_FALSE(ut::File().open(path));
    EXPECT_FALSE(ut::TextFile(path).exists());
    EXPECT_FALSE(ut::TextFile(path).open());
    EXPECT_FALSE(ut::TextFile(path).write());
    EXPECT_THROW(ut::readEntireFile(path), OdError);
}

// Every operation on the file `path` in a folder that is there.
void expectReached(const TemporaryFolder& root, const std::string& path) {
    const OdString text = root.text(path);
    EXPECT_EQ(text.toNarrow(), (root / path).string());
    ut::TextFile written(text);
    written.addLine(L"contents");
    EXPECT_TRUE(written.write()) << path;
    EXPECT_EQ(qrv_test::readFile(root / path), "contents") << path;
    EXPECT_TRUE(ut::FileName(text).exists(0x1FFF)) << path;
    EXPECT_TRUE(ut::File().open(text)) << path;
    EXPECT_EQ(ut::readEntireFile(text).toNarrow(), "contents") << path;
}

TEST(SystemPath, IsRefusedWithANulInside) {
    const TemporaryFolder root;
    qrv_test::writeFile(root / "folder/file", "old");
    OdString folderThenNul = root.text("folder");
    folderThenNul += L'\0';
    OdString fileThenNul = root.text("folder/file");
    fileThenNul += OdString(std::wstring(L"\0x", 2));
    OdString nothingThenNul = root.text("new");
    nothingThenNul += L'\0';
    for (const OdString& path : {folderThenNul, fileThenNul, nothingThenNul})
        expectRefused(path);
    EXPECT_EQ(qrv_test::listTree(root.path()),
              (std::vector<std::string>{"folder/", "folder/file"}));
    EXPECT_EQ(qrv_test::readFile(root / "folder/file"), "old");
}

TEST(SystemPath, ReachesNamesThatAreNoUtf8) {
    const TemporaryFolder root;
    for (const std::string name : {"\xFF",
                                   "a\x80"
                                   "b",
                                   "\xC3", "\xED\xA0\x80", "\xF0\x90\x80"})
        expectReached(root, name);
}

TEST(SystemPath, ReachesOddNames) {
    const TemporaryFolder root;
    for (const std::string name : {" ", " a ", "a\nb", "a\tb", "\"'", "a\\b", "...", "*", "\r", "~",
                                   "\xC3\xA4", "\xF0\x9F\x93\x90", "\xEF\xBB\xBF", "%s%n"})
        expectReached(root, name);
}

TEST(SystemPath, ReachesNamesOf255BytesAndRefusesLongerOnes) {
    const TemporaryFolder root;
    expectReached(root, std::string(255, 'a'));
    expectRefused(root.text(std::string(256, 'a')));
}

// A path of exactly `length` bytes below `root`, the folders of which are made.
std::string makeDeepPath(const TemporaryFolder& root, std::size_t length) {
    std::string relative;
    const std::size_t rootLength = root.path().string().size() + 1;
    while (rootLength + relative.size() + 202 < length) {
        relative += std::string(200, 'd') + "/";
        EXPECT_TRUE(ut::Dir::create(root.text(relative)));
    }
    return relative + std::string(length - rootLength - relative.size(), 'f');
}

TEST(SystemPath, ReachesTheLongestPathOfTheSystem) {
    const TemporaryFolder root;
    expectReached(root, makeDeepPath(root, PATH_MAX - 1));
}

TEST(SystemPath, RefusesALongerPathThanTheSystems) {
    const TemporaryFolder root;
    expectRefused(root.text(makeDeepPath(root, PATH_MAX)));
}

TEST(SystemPath, RefusesTheEmptyPath) {
    expectRefused(OdString());
}

}  // namespace
