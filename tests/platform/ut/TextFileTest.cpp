#include <platform/ut/TextFile.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

using qrv_test::TemporaryFolder;
using namespace std::string_literals;
using Lines = std::vector<std::string>;

Lines linesOf(ut::TextFile& file) {
    Lines lines;
    for (OdString line = file.getFirstLine(); !file.eof(); line = file.getNextLine())
        lines.push_back(line.toNarrow());
    return lines;
}

TEST(TextFile, ReadsLines) {
    struct Case {
        std::string bytes;
        Lines lines;
    };
    const Case cases[] = {
        {"", {}},
        {"a", {"a"}},
        {"a\n", {"a"}},
        {"\n", {""}},
        {"\r\n", {""}},
        {"\n\n", {"", ""}},
        {"a\nb", {"a", "b"}},
        {"a\r\nb\r\n", {"a", "b"}},
        {"a\n\n\nb", {"a", "", "", "b"}},
        {"a\rb\nc", {"a\rb", "c"}},
        {"a\r", {"a\r"}},
        {"\r", {"\r"}},
        {"a\r\r\nb", {"a\r", "b"}},
        {"a\n\rb", {"a", "\rb"}},
        {" a \n\tb\t", {" a ", "\tb\t"}},
        {"a\0b\nc"s, {"a\0b"s, "c"}},
        {"\xEF\xBB\xBF"
         "a\nb",
         {"a", "b"}},
        {"\xEF\xBB\xBF", {}},
        {"\xEF\xBB\xBF\n", {""}},
        {"a\n\xEF\xBB\xBF"
         "b",
         {"a",
          "\xEF\xBB\xBF"
          "b"}},
        {"\xFF\xFE"
         "a\0\r\0\n\0b\0"s,
         {"a", "b"}},
        {"\xFE\xFF\0a\0\n\0b"s, {"a", "b"}},
        {"\xFF\xFE"s, {}},
        {"\xE4\n\xC3\xA4", {"\xE4", "\xC3\xA4"}},
        {"a\v\f\xC2\x85"
         "b\xE2\x80\xA8"
         "c",
         {"a\v\f\xC2\x85"
          "b\xE2\x80\xA8"
          "c"}},
    };
    const TemporaryFolder folder;
    for (const Case& entry : cases) {
        qrv_test::writeFile(folder / "file", entry.bytes);
        ut::TextFile file(folder.text("file"));
        ASSERT_TRUE(file.open());
        EXPECT_EQ(linesOf(file), entry.lines) << testing::PrintToString(entry.bytes);
        EXPECT_EQ(linesOf(file), entry.lines) << "the second time";
    }
}

TEST(TextFile, ReportsItsEndOnlyAfterAReadPastTheLastLine) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "a\nb\n");
    ut::TextFile file(folder.text("file"));
    ASSERT_TRUE(file.open());
    EXPECT_FALSE(file.eof());
    EXPECT_EQ(file.getFirstLine().toNarrow(), "a");
    EXPECT_FALSE(file.eof());
    EXPECT_EQ(file.getNextLine().toNarrow(), "b");
    EXPECT_FALSE(file.eof());
    EXPECT_EQ(file.getNextLine().toNarrow(), "");
    EXPECT_TRUE(file.eof());
    EXPECT_EQ(file.getNextLine().toNarrow(), "");
    EXPECT_TRUE(file.eof());
    EXPECT_EQ(file.getFirstLine().toNarrow(), "a");
    EXPECT_FALSE(file.eof());
}

TEST(TextFile, HasNoFirstLineWhenEmpty) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "");
    ut::TextFile file(folder.text("file"));
    ASSERT_TRUE(file.open());
    EXPECT_FALSE(file.eof());
    EXPECT_EQ(file.getFirstLine().toNarrow(), "");
    EXPECT_TRUE(file.eof());
}

TEST(TextFile, HasNoLinesWhenItCannotBeRead) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "a\nb");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0666), 0);
    for (const char* name : {"missing", "pipe", ""}) {
        ut::TextFile file(folder.text(name));
        EXPECT_FALSE(file.open()) << name;
        EXPECT_EQ(linesOf(file), Lines{}) << name;
    }
    ut::TextFile file(folder.text("file"));
    ASSERT_TRUE(file.open());
    std::filesystem::remove(folder / "file");
    EXPECT_FALSE(file.open());
    EXPECT_EQ(linesOf(file), Lines{});
}

TEST(TextFile, ExistsWhenThePathNamesAnythingThatIsThere) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "");
    std::filesystem::create_symlink("nowhere", folder / "broken");
    EXPECT_TRUE(ut::TextFile(folder.text("file")).exists());
    EXPECT_FALSE(ut::TextFile(folder.text("broken")).exists());
    EXPECT_TRUE(ut::TextFile(folder.text()).exists());
    EXPECT_FALSE(ut::TextFile(folder.text("missing")).exists());
}

TEST(TextFile, WritesItsLinesWithoutALastLineEnd) {
    struct Case {
        std::vector<OdString> lines;
        std::string bytes;
    };
    const Case cases[] = {
        {{}, ""},
        {{L""}, ""},
        {{L"", L""}, "\n"},
        {{L"a"}, "a"},
        {{L"a", L"", L"b"}, "a\n\nb"},
        {{L"", L"a"}, "\na"},
        {{L"a\nb\n"}, "a\nb\n"},
        {{L"a\r", L"b"}, "a\r\nb"},
        {{OdString("\xC3\xA4\xF0\x9F\x93\x90\xFF")}, "\xC3\xA4\xF0\x9F\x93\x90\xFF"},
        {{std::wstring(L"a\0b", 3)}, "a\0b"s},
        {{std::wstring(1, wchar_t{0xD83D}), std::wstring(1, wchar_t{0xDE00})},
         "\xED\xA0\xBD\n\xED\xB8\x80"},
    };
    const TemporaryFolder folder;
    for (const Case& entry : cases) {
        qrv_test::writeFile(folder / "file", "old");
        ut::TextFile file(folder.text("file"));
        for (const OdString& line : entry.lines)
            file.addLine(line);
        ASSERT_TRUE(file.write());
        EXPECT_EQ(qrv_test::readFile(folder / "file"), entry.bytes);
    }
}

TEST(TextFile, KeepsTheAddedLinesForAnotherWrite) {
    const TemporaryFolder folder;
    ut::TextFile file(folder.text("file"));
    file.addLine(L"a");
    ASSERT_TRUE(file.write());
    file.addLine(L"b");
    ASSERT_TRUE(file.write());
    EXPECT_EQ(qrv_test::readFile(folder / "file"), "a\nb");
}

TEST(TextFile, DoesNotWriteTheLinesItRead) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "old\n");
    ut::TextFile file(folder.text("file"));
    ASSERT_TRUE(file.open());
    file.addLine(L"new");
    ASSERT_TRUE(file.write());
    EXPECT_EQ(qrv_test::readFile(folder / "file"), "new");
    EXPECT_EQ(linesOf(file), Lines{"old"});
}

TEST(TextFile, ReadsBackWhatItWrote) {
    const TemporaryFolder folder;
    const Lines lines = {"", "\xC3\xA4 \xFF", "\t#!", "a b "};
    ut::TextFile written(folder.text("file"));
    for (const std::string& line : lines)
        written.addLine(OdString::fromNarrow(line));
    ASSERT_TRUE(written.write());
    ut::TextFile file(folder.text("file"));
    ASSERT_TRUE(file.open());
    EXPECT_EQ(linesOf(file), lines);
}

}  // namespace
