#include <engine/diff/Differences.h>
#include <engine/paths/CheckedUrl.h>
#include <tests/engine/history/Repository.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using qrv::Difference;
using qrv::differencesBetween;
using qrv::FileVersion;
using qrv::Renames;
using qrv::Snapshot;
using qrv_test::url;

FileVersion stored(char letter, std::int64_t sizeBytes = 1) {
    return {url(letter), {}, sizeBytes};
}

FileVersion working(char letter, std::int64_t sizeBytes = 1) {
    return {{}, OdString::fromNarrow(std::string(64, letter)), sizeBytes};
}

FileVersion drawing(const wchar_t* store, char letter) {
    return {qrv::drawingUrl(store, OdString::fromNarrow(std::string(64, letter))), {}, 1};
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
    const Snapshot before = {{L"a", stored('a')}, {L"c", stored('c')}, {L"d", stored('d')}};
    const Snapshot after = {{L"b", stored('b')}, {L"c", stored('e')}, {L"d", stored('d')}};
    EXPECT_EQ(shown(differencesBetween(before, after)), "-a +b *c ");
    EXPECT_EQ(shown(differencesBetween({}, after)), "+b +c +d ");
    EXPECT_EQ(shown(differencesBetween(before, {})), "-a -c -d ");
    EXPECT_EQ(shown(differencesBetween(before, before)), "");
}

TEST(DifferencesBetween, CompareContentsWhereverTheyAre) {
    const Snapshot before = {{L"a", stored('a')}, {L"b", drawing(L"one", 'b')}};
    const Snapshot same = {{L"a", working('a')}, {L"b", drawing(L"two", 'b')}};
    const Snapshot other = {{L"a", working('c')}, {L"b", drawing(L"one", 'd')}};
    EXPECT_EQ(shown(differencesBetween(before, same)), "");
    EXPECT_EQ(shown(differencesBetween(before, other)), "*a *b ");
    EXPECT_EQ(shown(differencesBetween(same, same)), "");
}

TEST(DifferencesBetween, SeeRenamesByEqualContents) {
    const Snapshot before = {{L"a", stored('a')}, {L"z", drawing(L"one", 'b')}};
    const Snapshot after = {{L"b", working('a')}, {L"y", drawing(L"two", 'b')}};
    EXPECT_EQ(shown(differencesBetween(before, after)), "a>b z>y ");
}

TEST(DifferencesBetween, TakeEachFileForOneRenameOnly) {
    const Snapshot before = {{L"a", stored('a')}, {L"b", stored('a')}};
    const Snapshot after = {{L"c", stored('a')}, {L"d", stored('a')}, {L"e", stored('a')}};
    EXPECT_EQ(shown(differencesBetween(before, after)), "a>c b>d +e ");
    EXPECT_EQ(shown(differencesBetween(after, before)), "c>a d>b -e ");
}

TEST(DifferencesBetween, TakeNoEmptyFileForARenamedOne) {
    EXPECT_EQ(shown(differencesBetween({{L"a", stored('a', 0)}}, {{L"b", stored('a', 0)}})),
              "-a +b ");
}

TEST(DifferencesBetween, TakeNoCopyForARenamedFile) {
    const Snapshot before = {{L"a", stored('a')}};
    EXPECT_EQ(shown(differencesBetween(before, {{L"a", stored('a')}, {L"b", stored('a')}})), "+b ");
}

TEST(DifferencesBetween, BelieveNotedRenames) {
    const Snapshot before = {{L"a", stored('a')}, {L"b", stored('b')}};
    const Snapshot after = {{L"c", stored('b')}, {L"d", stored('c')}};
    EXPECT_EQ(shown(differencesBetween(before, after, {{L"d", L"a"}})), "b>c a~d ");
    EXPECT_EQ(shown(differencesBetween(before, after, {{L"c", L"a"}})), "-b a~c +d ");
}

TEST(DifferencesBetween, IgnoreNotedRenamesThatAreNone) {
    const Snapshot before = {{L"a", stored('a')}, {L"b", stored('b')}};
    const Snapshot after = {{L"a", stored('a')}, {L"b", stored('c')}, {L"d", stored('d')}};
    const Renames wrong = {{L"d", L"a"}, {L"b", L"a"}, {L"x", L"y"}, {L"a", L"b"}};
    EXPECT_EQ(shown(differencesBetween(before, after, wrong)), "*b +d ");
    // "x" went, so nothing became it.
    EXPECT_EQ(shown(differencesBetween({{L"x", stored('a')}, {L"y", stored('b')}},
                                       {{L"a", stored('a')}}, {{L"a", L"x"}, {L"x", L"y"}})),
              "x>a -y ");
    const Renames chain = {{L"b", L"a"}, {L"a", L"b"}};
    EXPECT_EQ(shown(differencesBetween(before, {}, chain)), "-a -b ");
}

}  // namespace
