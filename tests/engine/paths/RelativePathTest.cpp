#include <engine/paths/RelativePath.h>

#include <gmock/gmock.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using qrv::RelativePath;
using namespace std::string_view_literals;

constexpr std::wstring_view ownFolder = L"it could lead into the repository's own folder";

/// Empty for a path that is accepted.
std::wstring refusalOfPath(std::string_view path) {
    const wchar_t* reason = qrv::refusalOfPath(path);
    return reason == nullptr ? L"" : reason;
}

struct Refused {
    std::string_view path;
    std::wstring_view reason;
};

void expectRefused(const std::vector<Refused>& table) {
    for (const auto& [path, reason] : table)
        EXPECT_EQ(refusalOfPath(path), reason) << path;
}

TEST(RefusalOfPath, AcceptsWhatCannotLeaveTheTree) {
    for (const std::string_view path : {
             "plan.dwg"sv,
             "plans/ground floor.dxf"sv,
             "a/b/c"sv,
             "..a"sv,
             "a.."sv,
             ".hidden/.file"sv,
             "...a"sv,
             " a"sv,
             "a "sv,
             "a./b"sv,
             "Übergabe/Gehäuse.dxf"sv,
             "not utf-8 \xFF\xC3"sv,
             "line\nfeed\r\t"sv,
             "aux.dwg"sv,
             "*?<>|\""sv,
             "~1"sv,
             "-rf"sv,
         })
        EXPECT_EQ(refusalOfPath(path), L"") << path;
}

TEST(RefusalOfPath, RefusesWhatCouldLeaveTheTree) {
    constexpr std::wstring_view dots = L"it has a component of dots or blanks only";
    constexpr std::wstring_view empty = L"it has an empty component";
    expectRefused({
        {"", L"it is empty"},
        {"/etc/passwd", L"it is not relative"},
        {"//host/share", L"it is not relative"},
        {"..", dots},
        {".", dots},
        {"../x", dots},
        {"../../x", dots},
        {"a/../../x", dots},
        {"a/..", dots},
        {"a/./b", dots},
        {"./x", dots},
        {"...", dots},
        {".. /x", dots},
        {". .", dots},
        {" ", dots},
        {"a//b", empty},
        {"a/", empty},
    });
}

TEST(RefusalOfPath, RefusesWhatAnotherSystemTakesForAPathOrAnotherFile) {
    constexpr std::wstring_view colon = L"it has a colon in it";
    constexpr std::wstring_view backslash = L"it has a backslash in it";
    expectRefused({
        {"C:\\x", backslash},
        {"a\\..\\..\\x", backslash},
        {".QRV\\state", backslash},
        {"\\\\host\\share", backslash},
        {"C:x", colon},
        {"1:x", colon},
        {"ä:x", colon},
        {"a/file:stream", colon},
        {".QRV::$INDEX_ALLOCATION", colon},
        {"a\0b"sv, L"it has a NUL in it"},
        {".qrv\0x"sv, L"it has a NUL in it"},
        {"\0"sv, L"it has a NUL in it"},
    });
}

TEST(RefusalOfPath, RefusesTheMetadataFolderInEveryCaseAndPlace) {
    expectRefused({
        {".qrv", ownFolder},
        {".qrv/qrv.state", ownFolder},
        {".QRV/qrv.state", ownFolder},
        {".QrV/x", ownFolder},
        {"sub/.QRV/x", ownFolder},
        {"sub/.qrv", ownFolder},
        {".qrv/objects/x", ownFolder},
    });
}

TEST(RefusalOfPath, RefusesTheMetadataFolderWithEndsThatWindowsDrops) {
    expectRefused({
        {".QRV.", ownFolder},
        {".QRV ", ownFolder},
        {".qrv. . /x", ownFolder},
        {".qrv...", ownFolder},
        {"qrv~1.", ownFolder},
    });
}

TEST(RefusalOfPath, RefusesShortNamesOfTheMetadataFolder) {
    expectRefused({
        {"QRV~1", ownFolder},
        {"qrv~1/x", ownFolder},
        {"sub/Qrv~12", ownFolder},
        {"QR7EBA~1", ownFolder},
        {"qr00ff~3/state", ownFolder},
        {"QRV~1 ", ownFolder},
    });
}

TEST(RefusalOfPath, RefusesTheMetadataFolderWithEveryIgnoredCharacter) {
    std::vector<std::string> ignored = {"\xEF\xBB\xBF"};
    for (const auto& [begin, first, last] :
         {std::tuple("\xE2\x80", 0x8C, 0x8F), std::tuple("\xE2\x80", 0xAA, 0xAE),
          std::tuple("\xE2\x81", 0xAA, 0xAF)}) {
        for (int byte = first; byte <= last; ++byte)
            ignored.push_back(begin + std::string(1, static_cast<char>(byte)));
    }
    EXPECT_EQ(ignored.size(), 16U);
    for (const std::string& character : ignored) {
        for (std::size_t at = 0; at <= 4; ++at) {
            std::string name = ".qRv";
            name.insert(at, character);
            EXPECT_EQ(refusalOfPath("a/" + name + "/x"), ownFolder) << name;
        }
    }
    EXPECT_EQ(refusalOfPath("\xE2\x80\x8C.q\xE2\x81\xAFrv\xEF\xBB\xBF. "), ownFolder);
}

TEST(RefusalOfPath, AcceptsNamesThatOnlyLookLikeTheMetadataFolder) {
    for (const std::string_view path : {
             "qrv"sv,
             ".qrvx"sv,
             ".qr"sv,
             "..qrv"sv,
             ".qrv.txt"sv,
             " .qrv"sv,
             ".q rv"sv,
             "qrv~"sv,
             "qrv~a"sv,
             "qrv~1.dwg"sv,
             "xqrv~1"sv,
             "qr7eb~1"sv,
             "qr7ebag~1"sv,
             "qr7ebx~1"sv,
             ".q\xE2\x80\x8Brv"sv,
             ".q\xE2\x80\x90rv"sv,
             ".q\xE2\x80\xAFrv"sv,
             ".q\xE2\x81\xA9rv"sv,
             ".q\xE2\x80"sv,
             ".123-4.qrv-tmp"sv,
         })
        EXPECT_EQ(refusalOfPath(path), L"") << path;
}

TEST(RefusalOfPath, AcceptsTheFilesOfThePropertiesFolderAsTheyAreSpelt) {
    EXPECT_EQ(refusalOfPath(".qrv/properties/ignore"), L"");
    EXPECT_EQ(refusalOfPath(".qrv/properties/project_name"), L"");
    expectRefused({
        {".qrv/properties", ownFolder},
        {".qrv/properties/", L"it has an empty component"},
        {".qrv/properties/..", L"it has a component of dots or blanks only"},
        {".qrv/properties/.qrv", ownFolder},
        {".qrv/properties/a/b", ownFolder},
        {".qrv/properties/../qrv.state", ownFolder},
        {".QRV/properties/ignore", ownFolder},
        {".qrv/Properties/ignore", ownFolder},
        {".qrv//properties/ignore", ownFolder},
        {"a/.qrv/properties/ignore", ownFolder},
    });
}

TEST(RefusalOfPath, LimitsNamesAndPaths) {
    const std::string longest(255, 'n');
    EXPECT_EQ(refusalOfPath(longest), L"");
    EXPECT_EQ(refusalOfPath("a/" + longest + "n/b"), L"a name in it is too long");
    std::string path;
    while (path.size() < 4000)
        path += "name/";
    path.resize(3999);
    path += 'x';
    EXPECT_EQ(refusalOfPath(path), L"");
    EXPECT_EQ(refusalOfPath(path + 'x'), L"it is too long");
}

TEST(RelativePath, KeepsTheTextAndItsBytes) {
    const Expected<RelativePath> path = RelativePath::check(L"pläne/a.dwg");
    ASSERT_TRUE(path);
    EXPECT_EQ(path->text(), OdString(L"pläne/a.dwg"));
    EXPECT_EQ(path->bytes(), "pl\xC3\xA4ne/a.dwg");
    EXPECT_FALSE(path->isProperties());
    EXPECT_TRUE(RelativePath::check(L".qrv/properties/ignore")->isProperties());
}

TEST(RelativePath, IsMadeOfBytesAsOfTexts) {
    for (const std::string_view bytes : {"pl\xC3\xA4ne/a.dwg"sv, "a\xFF\xC3"sv, "\xED\xA0\x80"sv}) {
        const Expected<RelativePath> path = RelativePath::checkBytes(bytes);
        ASSERT_TRUE(path);
        EXPECT_EQ(path->bytes(), bytes);
        EXPECT_EQ(*path, *RelativePath::check(OdString::fromNarrow(bytes)));
    }
    EXPECT_EQ(RelativePath::checkBytes("../plan.dwg").error().message,
              RelativePath::check(L"../plan.dwg").error().message);
}

TEST(RelativePath, HasTheOrderOfTexts) {
    const RelativePath path = RelativePath::check(L"b").value();
    EXPECT_EQ(path, OdString(L"b"));
    EXPECT_LT(path, OdString(L"c"));
    EXPECT_GT(path, OdString(L"a"));
    EXPECT_LT(RelativePath::check(L"B").value(), path);
}

TEST(RelativePath, KeepsNamesThatAreNotUtf8) {
    const Expected<RelativePath> path = RelativePath::check(OdString::fromNarrow("a\xFF\xC3"));
    ASSERT_TRUE(path);
    EXPECT_EQ(path->bytes(), "a\xFF\xC3");
}

TEST(RelativePath, NamesThePathAndTheReason) {
    EXPECT_EQ(RelativePath::check(L"../plan.dwg").error().message,
              OdString(L"'../plan.dwg' cannot be used as a path: it has a component of dots or "
                       L"blanks only"));
    EXPECT_EQ(RelativePath::check(L"a\x1B/.qrv").error().message,
              OdString(L"'a\\x1B/.qrv' cannot be used as a path: it could lead into the "
                       L"repository's own folder"));
}

TEST(RelativePath, RefusesASecondTextForTheSameBytes) {
    // Units that stand for the two bytes of "ä", and half a pair.
    const std::wstring bytes = {L'a', static_cast<wchar_t>(0xDCC3), static_cast<wchar_t>(0xDCA4)};
    EXPECT_EQ(RelativePath::check(bytes).error().message,
              OdString(L"'a\\xC3\\xA4' cannot be used as a path: it has a character that no name "
                       L"has"));
    EXPECT_FALSE(RelativePath::check(std::wstring(1, static_cast<wchar_t>(0xD800))));
}

}  // namespace
