#include <engine/base/Digest.h>
#include <engine/maintenance/NamedVersions.h>
#include <engine/paths/CheckedUrl.h>

#include <gmock/gmock.h>

#include <set>
#include <string>
#include <vector>

namespace {

using qrv::drawingUrl;
using qrv::NamedVersions;
using qrv::objectUrl;

OdString digest(int number) {
    return OdString::fromNarrow(qrv::Digest::of(std::to_string(number)));
}

qrv::DigestBytes bytes(int number) {
    return qrv::toDigestBytes(digest(number).toNarrow());
}

NamedVersions named(const std::vector<OdString>& urls) {
    NamedVersions named;
    for (const OdString& url : urls)
        named.add(url);
    named.order();
    return named;
}

TEST(NamedVersions, KnowsWhatWasAddedAndNothingElse) {
    const NamedVersions some = named({objectUrl(digest(1)), drawingUrl(L"plan", digest(2))});
    EXPECT_EQ(some.size(), 2U);
    EXPECT_TRUE(some.contains(objectUrl(digest(1))));
    EXPECT_TRUE(some.contains(drawingUrl(L"plan", digest(2))));
    for (const OdString& other :
         {objectUrl(digest(2)), drawingUrl(L"plan", digest(1)), drawingUrl(L"other", digest(2)),
          OdString(L"po:"), OdString(), OdString(L"plan.dwg")})
        EXPECT_FALSE(some.contains(other)) << other.toNarrow();
}

TEST(NamedVersions, HoldsEachOnce) {
    EXPECT_EQ(named({objectUrl(digest(1)), objectUrl(digest(2)), objectUrl(digest(1))}).size(), 2U);
    EXPECT_TRUE(named({}).isEmpty());
}

TEST(NamedVersions, GivesBackTheUrls) {
    std::set<OdString> urls;
    for (int number = 0; number < 300; ++number) {
        urls.insert(objectUrl(digest(number)));
        urls.insert(drawingUrl(L"store" + digest(number % 7).left(5), digest(number)));
    }
    const NamedVersions all = named({urls.begin(), urls.end()});
    std::set<OdString> given;
    for (std::size_t which = 0; which < all.size(); ++which) {
        EXPECT_EQ(all.find(all.url(which)), which);
        given.insert(all.url(which));
    }
    EXPECT_EQ(given, urls);
}

TEST(NamedVersions, FindsAllOfOneDigest) {
    const NamedVersions all =
        named({drawingUrl(L"b", digest(1)), objectUrl(digest(1)), drawingUrl(L"a", digest(1)),
               objectUrl(digest(2)), objectUrl(digest(3))});
    const NamedVersions::Range range = all.ofDigest(bytes(1));
    std::set<OdString> urls;
    for (std::size_t which = range.first; which < range.first + range.count; ++which)
        urls.insert(all.url(which));
    EXPECT_EQ(urls, (std::set<OdString>{objectUrl(digest(1)), drawingUrl(L"a", digest(1)),
                                        drawingUrl(L"b", digest(1))}));
    EXPECT_EQ(all.ofDigest(bytes(2)).count, 1U);
    EXPECT_EQ(all.ofDigest(bytes(4)).count, 0U);
}

TEST(NamedVersions, LeaveOutWhatIsNoUrl) {
    EXPECT_TRUE(named({OdString(), OdString(L"po:../../x"), OdString(L"tf:a/b#0")}).isEmpty());
}

}  // namespace
