#include <platform/ut/Dir.h>
#include <platform/ut/ScopedFault.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv_test::TemporaryFolder;
using ut::Dir;
using Names = std::vector<std::string>;

Names list(const Dir& dir, std::uint32_t attributes, const char* pattern = "") {
    Names names;
    for (const OdString& name : dir.list(pattern, attributes))
        names.push_back(name.toNarrow());
    return names;
}

Names files(const TemporaryFolder& folder) {
    return list(Dir(folder.text()), Dir::kFiles);
}

Names folders(const TemporaryFolder& folder) {
    return list(Dir(folder.text()), Dir::kFolders);
}

// Makes a socket's entry. Its path is short enough for the system's address.
void makeSocket(const fs::path& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.string().size(), sizeof address.sun_path);
    std::strcpy(address.sun_path, path.c_str());
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    EXPECT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    close(descriptor);
}

TEST(Dir, ListsFilesAndFoldersByName) {
    const TemporaryFolder folder;
    for (const char* name : {"b.dwg", "a", "B", ".hidden", "10", "9", "a.b"})
        qrv_test::writeFile(folder / name, "");
    for (const char* name : {"sub", ".qrv", "a b"})
        fs::create_directory(folder / name);
    const Dir dir(folder.text());
    EXPECT_TRUE(dir.isOpened());
    EXPECT_EQ(list(dir, Dir::kFiles), (Names{".hidden", "10", "9", "B", "a", "a.b", "b.dwg"}));
    EXPECT_EQ(list(dir, Dir::kFolders), (Names{".qrv", "a b", "sub"}));
    EXPECT_EQ(list(dir, Dir::kFiles | Dir::kFolders),
              (Names{".hidden", ".qrv", "10", "9", "B", "a", "a b", "a.b", "b.dwg", "sub"}));
    EXPECT_EQ(list(dir, 0), Names{});
}

TEST(Dir, ExtendedListingAddsNothing) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "sub/file", "");
    qrv_test::writeFile(folder / "file", "");
    const Dir dir(folder.text());
    EXPECT_EQ(list(dir, Dir::kExtended), Names{});
    EXPECT_EQ(list(dir, Dir::kExtended | Dir::kFiles), Names{"file"});
    EXPECT_EQ(list(dir, Dir::kExtended | Dir::kFolders), Names{"sub"});
}

TEST(Dir, IsReadWhenItIsMade) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "a", "");
    const Dir dir(folder.text());
    qrv_test::writeFile(folder / "b", "");
    fs::remove(folder / "a");
    EXPECT_EQ(list(dir, Dir::kFiles), Names{"a"});
}

TEST(Dir, FollowsLinksToFilesOnly) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "");
    fs::create_directory(folder / "sub");
    fs::create_symlink("file", folder / "to file");
    fs::create_symlink("to file", folder / "to link");
    fs::create_directory_symlink("sub", folder / "to folder");
    fs::create_directory_symlink(".", folder / "to itself");
    fs::create_symlink("nowhere", folder / "broken");
    fs::create_symlink("loop", folder / "loop");
    fs::create_symlink("/dev/null", folder / "to device");
    EXPECT_EQ(files(folder), (Names{"file", "to file", "to link"}));
    EXPECT_EQ(folders(folder), Names{"sub"});
}

TEST(Dir, LeavesOutPipesAndSockets) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0666), 0);
    makeSocket(folder / "socket");
    fs::create_symlink("pipe", folder / "to pipe");
    ASSERT_TRUE(fs::is_socket(folder / "socket"));
    EXPECT_EQ(list(Dir(folder.text()), Dir::kFiles | Dir::kFolders), Names{"file"});
}

TEST(Dir, LeavesOutDevices) {
    const Names names = list(Dir(L"/dev"), Dir::kFiles | Dir::kFolders);
    EXPECT_THAT(names, testing::Not(testing::Contains("null")));
}

TEST(Dir, ListsOddNamesUnchanged) {
    const TemporaryFolder folder;
    const Names names = {"\n",
                         " ",
                         " a ",
                         "\"",
                         "#",
                         "...",
                         "a\tb",
                         "a\nb",
                         "a\\b",
                         "\x7F",
                         std::string(255, 'n'),
                         "\xC3\xA4",
                         "\xF0\x9F\x93\x90",
                         "\x80",
                         "\xC3",
                         "\xED\xA0\x80",
                         "\xFF"};
    for (const std::string& name : names)
        qrv_test::writeFile(folder / name, "");
    EXPECT_THAT(files(folder), testing::UnorderedElementsAreArray(names));
}

TEST(Dir, SortsByCodeUnitsAndNotByBytes) {
    const TemporaryFolder folder;
    // U+10000 is D800 DC00 in units and so comes before U+E000; a byte that is no UTF-8 is a unit
    // between them.
    const Names names = {
        "A",    "a",    "\xC3\xA4",     "\xED\x9F\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF",
        "\x80", "\xFF", "\xEE\x80\x80", "\xEF\xBF\xBD"};
    for (const std::string& name : names) {
        qrv_test::writeFile(folder / ("f" + name), "");
        fs::create_directory(folder / ("d" + name));
    }
    Names expectedFiles, expectedFolders;
    for (const std::string& name : names) {
        expectedFiles.push_back("f" + name);
        expectedFolders.push_back("d" + name);
    }
    EXPECT_EQ(files(folder), expectedFiles);
    EXPECT_EQ(folders(folder), expectedFolders);
}

TEST(Dir, SortsAsTextsCompare) {
    const TemporaryFolder folder;
    std::mt19937 random(7);
    for (int count = 0; count < 500; ++count) {
        std::string name;
        for (std::size_t length = 1 + random() % 6; name.size() < length;) {
            const char byte =
                static_cast<char>(count % 2 == 0 ? random() % 256 : 'a' + random() % 4);
            if (byte != '\0' && byte != '/')
                name += byte;
        }
        if (name != "." && name != "..")
            qrv_test::writeFile(folder / name, "");
    }
    const std::vector<OdString> names = Dir(folder.text()).list(OdString(), Dir::kFiles);
    EXPECT_GT(names.size(), 250U);
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
}

TEST(Dir, ListsALargeFolderWhole) {
    const TemporaryFolder folder;
    Names names;
    for (int number = 10000; number < 13000; ++number) {
        names.push_back(std::to_string(number) + " with a long name behind the number");
        qrv_test::writeFile(folder / names.back(), "");
    }
    EXPECT_EQ(files(folder), names);
}

TEST(Dir, ListsWhatMatchesAPattern) {
    const TemporaryFolder folder;
    for (const char* name : {"a.dwg", "b.dwg", "c.DWG", "d.dwgx", "\xC3\xA4.dwg"})
        qrv_test::writeFile(folder / name, "");
    fs::create_directory(folder / "sub.dwg");
    const Dir dir(folder.text());
    EXPECT_EQ(list(dir, Dir::kFiles, "*.dwg"), (Names{"a.dwg", "b.dwg", "\xC3\xA4.dwg"}));
    EXPECT_EQ(list(dir, Dir::kFiles, "?.dwg"), (Names{"a.dwg", "b.dwg", "\xC3\xA4.dwg"}));
    EXPECT_EQ(list(dir, Dir::kFiles | Dir::kFolders, "*b.dwg"), (Names{"b.dwg", "sub.dwg"}));
    EXPECT_EQ(list(dir, Dir::kFiles, "none"), Names{});
}

TEST(Dir, OpensOnlyFolders) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0666), 0);
    for (const char* name : {"file", "pipe", "missing", "file/"}) {
        const Dir dir(folder.text(name));
        EXPECT_FALSE(dir.isOpened()) << name;
        EXPECT_EQ(list(dir, Dir::kFiles | Dir::kFolders), Names{}) << name;
        EXPECT_EQ(dir.getName(), folder.text(name));
    }
    fs::create_directory_symlink(folder.path(), folder / "link");
    EXPECT_EQ(list(Dir(folder.text("link")), Dir::kFiles), Names{"file"});
}

TEST(Dir, KeepsItsPathAsGiven) {
    EXPECT_EQ(Dir(L"/tmp//./").getName().toNarrow(), "/tmp//./");
}

TEST(Dir, TellsWhetherAFolderExists) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "");
    fs::create_directory_symlink(folder.path(), folder / "link");
    fs::create_symlink("nowhere", folder / "broken");
    EXPECT_TRUE(Dir::exists(folder.text()));
    EXPECT_TRUE(Dir::exists(folder.text("link")));
    EXPECT_FALSE(Dir::exists(folder.text("file")));
    EXPECT_FALSE(Dir::exists(folder.text("broken")));
    EXPECT_FALSE(Dir::exists(folder.text("missing")));
}

TEST(Dir, MakesOneFolder) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "");
    EXPECT_TRUE(Dir::create(folder.text("a")));
    EXPECT_FALSE(Dir::create(folder.text("a"))) << "it is there already";
    EXPECT_FALSE(Dir::create(folder.text("file")));
    EXPECT_FALSE(Dir::create(folder.text("b/c"))) << "its parent is missing";
    EXPECT_EQ(qrv_test::listTree(folder.path()), (Names{"a/", "file"}));
}

TEST(Dir, IsNotOpenedWhenACallFails) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "");
    std::vector<bool> opened;
    for (int nth = 1;; ++nth) {
        const ut::ScopedFault fault(nth, EIO);
        const Dir dir(folder.text());
        if (!fault.hasFired())
            break;
        opened.push_back(dir.isOpened());
        EXPECT_EQ(list(dir, Dir::kFiles), dir.isOpened() ? Names{"file"} : Names{}) << nth;
    }
    // Opening, reading the entries, meeting their end; closing has nothing to lose.
    EXPECT_EQ(opened, (std::vector<bool>{false, false, false, true}));
}

TEST(Dir, LeavesOutALinkWhoseTargetCannotBeAsked) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder / "file", "");
    fs::create_symlink("file", folder / "link");
    const ut::ScopedFault fault(3, EIO);
    EXPECT_EQ(files(folder), Names{"file"});
    EXPECT_TRUE(fault.hasFired());
}

TEST(Dir, ClosesWhatItOpened) {
    const TemporaryFolder folder;
    const auto descriptors = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    const auto before = descriptors();
    const Dir dir(folder.text());
    EXPECT_TRUE(dir.isOpened());
    EXPECT_EQ(descriptors(), before);
}

}  // namespace
