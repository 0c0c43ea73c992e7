#include <engine/diff/Differences.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/tree/Difference.h>
#include <tests/engine/tree/Trees.h>

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

using qrv::Difference;
using qrv::Renames;
using qrv::Tree;
using qrv::TreeFile;
using qrv_test::url;

TreeFile stored(char letter, std::int64_t sizeBytes = 1) {
    return {url(letter), sizeBytes};
}

TreeFile working(char letter, std::int64_t sizeBytes = 1) {
    return {OdString::fromNarrow(std::string(64, letter)), sizeBytes};
}

TreeFile drawing(const wchar_t* store, char letter) {
    return {qrv::drawingUrl(store, OdString::fromNarrow(std::string(64, letter))), 1};
}

/// Files by their paths, on either side of a comparison.
using Files = std::map<OdString, TreeFile>;

std::vector<Difference> between(const Files& before, const Files& after,
                                const Renames& noted = {}) {
    const auto sideOf = [](const TreeFile* file) {
        return file == nullptr ? std::nullopt : std::optional(*file);
    };
    std::vector<Difference> files;
    qrv::visitDifferences(before, after,
                          [&](const OdString& path, const TreeFile* old, const TreeFile* file) {
                              files.push_back({path, {}, sideOf(old), sideOf(file)});
                          });
    return qrv::withRenames(std::move(files), noted);
}

/// A sign a difference: "+", "-", "*" or, with both paths, ">" for a mere rename and "~" for one
/// with other contents.
std::string shown(const std::vector<Difference>& differences) {
    std::string text;
    for (const Difference& difference : differences) {
        if (difference.isRenamed())
            text +=
                difference.previousPath.toNarrow() + (difference.hasOtherContents() ? "~" : ">");
        else if (difference.before && difference.after)
            text += '*';
        else
            text += difference.before ? '-' : '+';
        text += difference.path.toNarrow() + ' ';
    }
    return text;
}

TEST(DifferencesBetween, TellWhatWasAddedChangedAndRemoved) {
    const Files before = {{L"a", stored('a')}, {L"c", stored('c')}, {L"d", stored('d')}};
    const Files after = {{L"b", stored('b')}, {L"c", stored('e')}, {L"d", stored('d')}};
    EXPECT_EQ(shown(between(before, after)), "-a +b *c ");
    EXPECT_EQ(shown(between({}, after)), "+b +c +d ");
    EXPECT_EQ(shown(between(before, {})), "-a -c -d ");
    EXPECT_EQ(shown(between(before, before)), "");
}

TEST(DifferencesBetween, OfTwoTreesAreThoseOfTheirFiles) {
    const Tree before = qrv_test::treeOf("a=1 b=2 c=3");
    const Tree after = qrv_test::treeOf("a=2 b=2 d=3");
    EXPECT_EQ(shown(qrv::withRenames(differencesOf(changesBetween(before, after)))), "*a c>d ");
}

TEST(DifferencesBetween, CompareContentsWhereverTheyAre) {
    const Files before = {{L"a", stored('a')}, {L"b", drawing(L"one", 'b')}};
    const Files same = {{L"a", working('a')}, {L"b", drawing(L"two", 'b')}};
    const Files other = {{L"a", working('c')}, {L"b", drawing(L"one", 'd')}};
    EXPECT_EQ(shown(between(before, same)), "");
    EXPECT_EQ(shown(between(before, other)), "*a *b ");
    EXPECT_EQ(shown(between(same, same)), "");
}

TEST(DifferencesBetween, SeeRenamesByEqualContents) {
    const Files before = {{L"a", stored('a')}, {L"z", drawing(L"one", 'b')}};
    const Files after = {{L"b", working('a')}, {L"y", drawing(L"two", 'b')}};
    EXPECT_EQ(shown(between(before, after)), "a>b z>y ");
}

TEST(DifferencesBetween, TakeEachFileForOneRenameOnly) {
    const Files before = {{L"a", stored('a')}, {L"b", stored('a')}};
    const Files after = {{L"c", stored('a')}, {L"d", stored('a')}, {L"e", stored('a')}};
    EXPECT_EQ(shown(between(before, after)), "a>c b>d +e ");
    EXPECT_EQ(shown(between(after, before)), "c>a d>b -e ");
}

TEST(DifferencesBetween, TakeNoEmptyFileForARenamedOne) {
    EXPECT_EQ(shown(between({{L"a", stored('a', 0)}}, {{L"b", stored('a', 0)}})), "-a +b ");
}

TEST(DifferencesBetween, TakeNoCopyForARenamedFile) {
    const Files before = {{L"a", stored('a')}};
    EXPECT_EQ(shown(between(before, {{L"a", stored('a')}, {L"b", stored('a')}})), "+b ");
}

TEST(DifferencesBetween, BelieveNotedRenames) {
    const Files before = {{L"a", stored('a')}, {L"b", stored('b')}};
    const Files after = {{L"c", stored('b')}, {L"d", stored('c')}};
    EXPECT_EQ(shown(between(before, after, {{L"d", L"a"}})), "b>c a~d ");
    EXPECT_EQ(shown(between(before, after, {{L"c", L"a"}})), "-b a~c +d ");
}

TEST(DifferencesBetween, IgnoreNotedRenamesThatAreNone) {
    const Files before = {{L"a", stored('a')}, {L"b", stored('b')}};
    const Files after = {{L"a", stored('a')}, {L"b", stored('c')}, {L"d", stored('d')}};
    const Renames wrong = {{L"d", L"a"}, {L"b", L"a"}, {L"x", L"y"}, {L"a", L"b"}};
    EXPECT_EQ(shown(between(before, after, wrong)), "*b +d ");
    // "x" went, so nothing became it.
    EXPECT_EQ(shown(between({{L"x", stored('a')}, {L"y", stored('b')}}, {{L"a", stored('a')}},
                            {{L"a", L"x"}, {L"x", L"y"}})),
              "x>a -y ");
    const Renames chain = {{L"b", L"a"}, {L"a", L"b"}};
    EXPECT_EQ(shown(between(before, {}, chain)), "-a -b ");
}

}  // namespace
