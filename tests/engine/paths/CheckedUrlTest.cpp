#include <engine/paths/CheckedUrl.h>

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using qrv::CheckedUrl;

const std::wstring digest = L"0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef";

TEST(CheckedUrl, TakesAnObjectApart) {
    const Expected<CheckedUrl> url = CheckedUrl::check(L"po:" + digest);
    ASSERT_TRUE(url);
    EXPECT_EQ(url->text(), OdString(L"po:" + digest));
    EXPECT_EQ(url->digest(), OdString(digest));
    EXPECT_EQ(url->store(), OdString());
    EXPECT_FALSE(url->isDrawing());
}

TEST(CheckedUrl, TakesADrawingApart) {
    const Expected<CheckedUrl> url = CheckedUrl::check(L"tf:Plan-1_a#" + digest);
    ASSERT_TRUE(url);
    EXPECT_EQ(url->digest(), OdString(digest));
    EXPECT_EQ(url->store(), OdString(L"Plan-1_a"));
    EXPECT_TRUE(url->isDrawing());
    EXPECT_TRUE(CheckedUrl::check(L"tf:" + std::wstring(200, L's') + L"#" + digest));
}

TEST(CheckedUrl, TellsTheNamesThatAStoreCanHave) {
    for (const wchar_t* const name : {L"a", L"Plan-1_a", L"0123"})
        EXPECT_TRUE(qrv::isStoreName(name)) << OdString(name).toNarrow();
    for (const wchar_t* const name : {L"", L"a/b", L"..", L"a.tf", L"a#b", L"con", L"\u00E4"})
        EXPECT_FALSE(qrv::isStoreName(name)) << OdString(name).toNarrow();
}

TEST(CheckedUrl, RefusesEverythingElse) {
    std::wstring upper = digest;
    upper[10] = L'A';
    std::wstring other = digest;
    other[63] = L'g';
    const std::vector<std::wstring> urls = {
        L"",
        L"po:",
        L"po",
        digest,
        L"po:" + digest + L"0",
        L"po:" + digest.substr(1),
        L"po:" + upper,
        L"po:" + other,
        L"po:0",
        L"po:" + std::wstring(10000, L'0'),
        L"po;" + digest,
        L"PO:" + digest,
        L"po:../../" + digest.substr(6),
        L"po:a#" + digest,
        L"tf:" + digest,
        L"tf:#" + digest,
        L"tf:a" + digest,
        L"tf:ab" + digest,
        L"tf:a#" + upper,
        L"tf:a#" + digest.substr(1),
        L"tf:a##" + digest,
        L"tf:a#b#" + digest,
        L"tf:a/b#" + digest,
        L"tf:..#" + digest,
        L"tf:a.b#" + digest,
        L"tf:a\\b#" + digest,
        L"tf:a b#" + digest,
        L"tf:\u00E4#" + digest,
        L"tf:con#" + digest,
        L"tf:LPT1#" + digest,
        L"tf:" + std::wstring(201, L's') + L"#" + digest,
        L"tf#" + digest,
        L"po:" + digest.substr(0, 63) + std::wstring(1, L'\0'),
        L"tf:a" + std::wstring(1, L'\0') + L"#" + digest,
        L"po:" + digest + L"\n",
    };
    for (const std::wstring& url : urls)
        EXPECT_FALSE(CheckedUrl::check(url)) << OdString(url).toNarrow();
}

TEST(CheckedUrl, NamesWhatItRefuses) {
    EXPECT_EQ(CheckedUrl::check(L"po:\x1B").error().message,
              OdString(L"'po:\\x1B' does not name a stored version"));
}

TEST(CheckedUrl, IsWhatTheMakersOfUrlsMake) {
    EXPECT_EQ(CheckedUrl::check(qrv::objectUrl(digest))->digest(), OdString(digest));
    EXPECT_EQ(CheckedUrl::check(qrv::drawingUrl(L"store", digest))->store(), OdString(L"store"));
}

}  // namespace
