#include <platform/ut/Paths.h>

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> split(const char* text, const char* separator, bool keepEmpty) {
    std::vector<std::string> pieces;
    for (const OdString& piece : ut::splitByChar(text, separator, keepEmpty))
        pieces.push_back(piece.toNarrow());
    return pieces;
}

using Pieces = std::vector<std::string>;

TEST(CorrectSlashes, KeepsABackslashWhereItIsPartOfAName) {
    EXPECT_EQ(ut::correctSlashes(L"/a\\b/c d//").toNarrow(), "/a\\b/c d//");
    EXPECT_EQ(ut::correctSlashes(L"").toNarrow(), "");
}

TEST(SplitByChar, LeavesOutEmptyPieces) {
    EXPECT_EQ(split("name@host", "@", false), (Pieces{"name", "host"}));
    EXPECT_EQ(split("@@name@@host@", "@", false), (Pieces{"name", "host"}));
    EXPECT_EQ(split("name", "@", false), (Pieces{"name"}));
    EXPECT_EQ(split("@", "@", false), Pieces{});
    EXPECT_EQ(split("", "@", false), Pieces{});
}

TEST(SplitByChar, KeepsEmptyPiecesWhenAsked) {
    EXPECT_EQ(split("@a@@b@", "@", true), (Pieces{"", "a", "", "b", ""}));
    EXPECT_EQ(split("@", "@", true), (Pieces{"", ""}));
    EXPECT_EQ(split("a", "@", true), (Pieces{"a"}));
    EXPECT_EQ(split("", "@", true), Pieces{});
}

TEST(SplitByChar, TakesTheSeparatorAsAWhole) {
    EXPECT_EQ(split("a::b:c", "::", false), (Pieces{"a", "b:c"}));
    EXPECT_EQ(split(":::", "::", true), (Pieces{"", ":"}));
    EXPECT_EQ(split("a@b", "", false), (Pieces{"a@b"}));
}

TEST(SplitByChar, FindsASeparatorBehindANul) {
    const OdString text = OdString::fromNarrow(std::string_view("a\0b@c", 5));
    const std::vector<OdString> pieces = ut::splitByChar(text, L"@", false);
    ASSERT_EQ(pieces.size(), 2U);
    EXPECT_EQ(pieces[0].toNarrow(), std::string("a\0b", 3));
    EXPECT_EQ(pieces[1].toNarrow(), "c");
}

}  // namespace
