#include <common/storage/StorageUrl.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace {

using common::FileStorage;
using common::fileToType;
using common::getRevision;
using common::getStoragePath;
using common::RootPath;
using common::urlToType;

const std::string digest = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";

/// A project root whose path is known.
struct Project {
    qrv_test::TemporaryFolder folder;
    RootPath root = RootPath::get(folder.text(), true).value();
};

/// The answer as one text: the value, or the error.
std::string shown(const Expected<OdString>& answer) {
    if (answer)
        return answer->toNarrow();
    return (answer.error().code == 0 ? "error: " : "error with a code: ") +
           answer.error().message.toNarrow();
}

std::string revision(const std::string& url) {
    return shown(getRevision(OdString::fromNarrow(url)));
}

std::string noRevision(const std::string& url) {
    return "error: Internal error, invalid url occurred: " + url;
}

/// The answer for a URL, with the root's path left out.
std::string storagePath(const Project& project, const std::string& url) {
    const std::string path = shown(getStoragePath(project.root, OdString::fromNarrow(url)));
    const std::string prefix = project.folder.path().string() + "/";
    return path.starts_with(prefix) ? "root/" + path.substr(prefix.size()) : path;
}

/// What the expression that defines the answer captures.
std::optional<std::string> captured(const char* expression, const std::string& text) {
    std::smatch match;
    if (!std::regex_match(text, match, std::regex(expression)))
        return std::nullopt;
    return match[1].str();
}

/// All texts of up to `longest` of the letters, behind the beginning.
std::vector<std::string> allTexts(const std::string& beginning, const std::string& letters,
                                  std::size_t longest) {
    std::vector<std::string> texts = {beginning};
    std::size_t first = 0;
    for (std::size_t length = 1; length <= longest; ++length) {
        const std::size_t end = texts.size();
        for (; first < end; ++first) {
            for (const char letter : letters)
                texts.push_back(texts[first] + letter);
        }
    }
    return texts;
}

TEST(StorageUrl, IsADrawingWhenItsFirstTwoLettersSaySo) {
    for (const char* url : {"tf", "tfx", "tf:plan#1", "tf\n"})
        EXPECT_EQ(urlToType(OdString(url)), FileStorage::Drawing) << url;
    for (const char* url : {"", "t", "f", "TF:plan#1", "tF:a#1", " tf:a#1", "po:x", "potf", "x"})
        EXPECT_EQ(urlToType(OdString(url)), FileStorage::Plain) << url;
    EXPECT_EQ(static_cast<int>(FileStorage::Drawing), 0);
    EXPECT_EQ(static_cast<int>(FileStorage::Plain), 1);
}

TEST(StorageUrl, TypeOfAFileIsToldByItsExtension) {
    for (const char* file : {"a.dwg", "A.Dwg", "A.DWG", "x/y.z/a.b.dWg", ".hidden.dwg"})
        EXPECT_EQ(fileToType(OdString(file)), FileStorage::Drawing) << file;
    for (const char* file :
         {"", "dwg", ".dwg", "a.dxf", "a.dwg.bak", "a.dwg ", "a.dw", "a.dwgx", "x.dwg/a", "a."})
        EXPECT_EQ(fileToType(OdString(file)), FileStorage::Plain) << file;
}

TEST(StorageUrl, RevisionOfADrawingFollowsTheLastHashSign) {
    EXPECT_EQ(revision("tf:plan#12"), "12");
    EXPECT_EQ(revision("tf:a#b#c"), "c");
    EXPECT_EQ(revision("tf:plan#"), "");
    EXPECT_EQ(revision("tf#7"), "7");
    EXPECT_EQ(revision("tfplan#7"), "7");
    EXPECT_EQ(revision("tf:T\xC3\xBCr#\xC3\xA9 \xF0\x9F\x98\x80"), "\xC3\xA9 \xF0\x9F\x98\x80");
    EXPECT_EQ(revision("tf:\xFF#\xFE"), "\xFE");
}

TEST(StorageUrl, RevisionOfAnObjectIsItsLast64Characters) {
    EXPECT_EQ(revision("po:" + digest), digest);
    EXPECT_EQ(revision("po#" + digest), digest);
    EXPECT_EQ(revision("po" + digest), digest);
    EXPECT_EQ(revision("po:more" + digest), digest);
    EXPECT_EQ(revision("po\n" + digest), digest);
    EXPECT_EQ(revision("po"), "po");
    EXPECT_EQ(revision("po:short"), "po:short");
}

TEST(StorageUrl, HasNoRevisionWhenItIsNeither) {
    for (const char* url : {"", "t", "p", "xx:abc", "TF:a#1", "PO:1", " tf:a#1", "tf", "tf:plan",
                            "tf:a\n#1", "tf:a#1\n", "tf:a#1\r", "tf:%ls"})
        EXPECT_EQ(revision(url), noRevision(url));
}

TEST(StorageUrl, LocatesAnObjectByItsDigest) {
    const Project project;
    EXPECT_EQ(storagePath(project, "po:" + digest), "root/.qrv/objects/" + digest);
    EXPECT_EQ(storagePath(project, "poX" + digest), "root/.qrv/objects/" + digest);
    EXPECT_EQ(storagePath(project, "po:short"), "root/.qrv/objects/po:short");
    EXPECT_EQ(storagePath(project, "po"), "root/.qrv/objects/po");
}

TEST(StorageUrl, LocatesADrawingByTheNameBeforeTheFirstHashSign) {
    const Project project;
    EXPECT_EQ(storagePath(project, "tf:plan#12"), "root/.qrv/tf/plan.tf");
    EXPECT_EQ(storagePath(project, "tf:a#b#c"), "root/.qrv/tf/a.tf");
    EXPECT_EQ(storagePath(project, "tf:a.b#"), "root/.qrv/tf/a.b.tf");
    EXPECT_EQ(storagePath(project, "tf:#1"), "root/.qrv/tf/.tf");
    EXPECT_EQ(storagePath(project, "tf:tf:x#1"), "root/.qrv/tf/tf:x.tf");
    EXPECT_EQ(storagePath(project, "tf:T\xC3\xBCr \xFF#1"), "root/.qrv/tf/T\xC3\xBCr \xFF.tf");
}

/// The cells of a line, which stand between " | ".
std::vector<std::string> cellsOf(const std::string& line) {
    const std::string separator = " | ";
    const std::size_t first = line.find(separator);
    const std::size_t second = line.find(separator, first + separator.size());
    return {line.substr(0, first),
            line.substr(first + separator.size(), second - first - separator.size()),
            line.substr(second + separator.size())};
}

TEST(StorageUrl, SamplesAreReadAsDocumented) {
    const Project project;
    std::istringstream lines(qrv_test::readFile(QRV_STORAGE_SAMPLES "/urls.sample"));
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        const std::vector<std::string> cells = cellsOf(line);
        const std::string& url = cells[0];
        EXPECT_EQ(revision(url), cells[1] == "error" ? noRevision(url) : cells[1]);
        EXPECT_EQ(storagePath(project, url),
                  cells[2] == "error" ? "error: invalid url: " + url : "root/" + cells[2]);
    }
    EXPECT_EQ(count, 8);
}

TEST(StorageUrl, HasNoLocationWhenItIsNeither) {
    const Project project;
    for (const char* url : {"", "tf", "tf:", "tf:plan", "tf#1", "tfplan#1", "xx:abc", "TF:a#1",
                            "PO:1", "tf:a\n#1", "tf:a#\r", "tf:%ls"})
        EXPECT_EQ(storagePath(project, url), "error: invalid url: " + std::string(url));
}

TEST(StorageUrl, LocatesADrawingAbsolutelyAlsoBelowARelativeRoot) {
    const Project project;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(project.folder.path().parent_path());
    const OdString name = OdString::fromNarrow(project.folder.path().filename().string());
    const RootPath relative = RootPath::get(name, false).value();
    const std::string drawing = shown(getStoragePath(relative, L"tf:plan#1"));
    const std::string object = shown(getStoragePath(relative, L"po:1"));
    std::filesystem::current_path(before);
    EXPECT_EQ(drawing, project.folder.path().string() + "/.qrv/tf/plan.tf");
    EXPECT_EQ(object, name.toNarrow() + "/.qrv/objects/po:1");
}

// Drawings were looked for in another folder than the state and the objects: the dots behind a link
// to a folder were resolved as text, which takes the link out.
TEST(StorageUrl, LocatesADrawingBesideTheStateAlsoBehindALink) {
    const Project project;
    const qrv_test::TemporaryFolder home;
    std::filesystem::create_directory(project.folder / "folder");
    std::filesystem::create_directory_symlink(project.folder / "folder", home / "link");
    const RootPath root = RootPath::get(home.text("link/.."), false).value();
    qrv_test::writeFile(project.folder / ".qrv/tf/plan.tf", "drawing");
    qrv_test::writeFile(project.folder / ".qrv/objects/1", "object");
    EXPECT_EQ(qrv_test::readFile(shown(getStoragePath(root, L"tf:plan#1"))), "drawing");
    EXPECT_EQ(qrv_test::readFile(home / "link/../.qrv/objects/1"), "object");
}

// Whether a name may be used is for the host to say: a URL can lead out of the store.
TEST(StorageUrl, KeepsTheDotsInAStoreName) {
    const Project project;
    EXPECT_EQ(storagePath(project, "tf:../../x#1"), "root/.qrv/tf/../../x.tf");
    EXPECT_EQ(storagePath(project, "tf:./a//b#1"), "root/.qrv/tf/a/b.tf");
    EXPECT_EQ(storagePath(project, "po:../x"), "root/.qrv/objects/po:../x");
}

TEST(StorageUrl, IsTakenApartAsTheExpressionsDo) {
    const Project project;
    std::vector<std::string> urls = allTexts("", "tf:#a\n\r", 4);
    for (const char* beginning : {"tf", "tf:"}) {
        for (const std::string& url : allTexts(beginning, "tf:#a\n\r", 4))
            urls.push_back(url);
    }
    for (const std::string& url : allTexts("tf:", "#.\x85\xE2\xA8", 3))
        urls.push_back(url);
    for (const std::string& url : urls) {
        const bool isDrawing = url.starts_with("tf");
        const auto last = isDrawing ? captured(".*#(.*)", url) : std::nullopt;
        EXPECT_EQ(revision(url), last.value_or(noRevision(url)));
        const auto store = isDrawing ? captured("tf:(.*?)#.*", url) : std::nullopt;
        if (store && (*store == "." || *store == ".."))
            continue;
        EXPECT_EQ(storagePath(project, url),
                  store ? "root/.qrv/tf/" + *store + ".tf" : "error: invalid url: " + url);
    }
}

// An expression would recurse once for each character and end the process.
TEST(StorageUrl, MayBeAsLongAsItLikes) {
    const Project project;
    const std::string name(4'000'000, 'a');
    EXPECT_EQ(revision("tf:" + name + "#" + name), name);
    EXPECT_EQ(revision("tf:" + name), noRevision("tf:" + name));
    EXPECT_EQ(revision("tf:#" + name + "\n"), noRevision("tf:#" + name + "\n"));
    EXPECT_EQ(revision("tf:" + std::string(4'000'000, '#')), "");
    EXPECT_EQ(revision(name), noRevision(name));
    EXPECT_EQ(revision("po" + name), name.substr(0, 64));
    EXPECT_EQ(storagePath(project, "tf:" + name + "#" + name), "root/.qrv/tf/" + name + ".tf");
    EXPECT_EQ(storagePath(project, "tf:" + name), "error: invalid url: tf:" + name);
    EXPECT_EQ(storagePath(project, "tf:" + std::string(4'000'000, '#')), "root/.qrv/tf/.tf");
    EXPECT_EQ(storagePath(project, "tf:" + std::string(4'000'000, '\n') + "#"),
              "error: invalid url: tf:" + std::string(4'000'000, '\n') + "#");
    EXPECT_EQ(storagePath(project, "po" + name), "root/.qrv/objects/" + name.substr(0, 64));
    EXPECT_EQ(urlToType(OdString::fromNarrow("tf" + name)), FileStorage::Drawing);
    EXPECT_EQ(fileToType(OdString::fromNarrow(name + ".DWG")), FileStorage::Drawing);
}

// Symptom: a revision with half a surrogate pair came back as it was.
// Cause: it was cut from the text, where it is defined by the narrow form, which has bytes for it.
TEST(StorageUrl, GivesWhatTheNarrowFormHolds) {
    const OdString half(std::wstring(1, static_cast<wchar_t>(0xD800)));
    const OdString narrowed = OdString::fromNarrow(half.toNarrow());
    ASSERT_NE(narrowed, half);
    EXPECT_EQ(getRevision(L"tf:a#" + half).value(), narrowed);
    const Project project;
    EXPECT_EQ(getStoragePath(project.root, L"tf:" + half + L"#1").value(),
              getStoragePath(project.root, L"tf:" + narrowed + L"#1").value());
    EXPECT_EQ(getRevision(L"po" + half).value(), L"po" + half);
}

TEST(StorageUrl, KeepsANulInside) {
    const OdString url(std::wstring(L"tf:a#\0b", 7));
    EXPECT_EQ(getRevision(url).value().toWide(), std::wstring(L"\0b", 2));
}

}  // namespace
