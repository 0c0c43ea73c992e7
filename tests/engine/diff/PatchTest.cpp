#include <engine/diff/Patch.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using qrv::Difference;
using qrv::PatchLine;
using qrv::TreeFile;

const TreeFile somewhere = {L"1", 12};
const TreeFile elsewhere = {L"2", 34};
const Difference modified = {L"plan", {}, somewhere, elsewhere};

template <class Write>
std::string written(const Write& write) {
    std::string text;
    write([&text](PatchLine, std::string_view line) { (text += line) += '\n'; });
    return text;
}

std::string heading(const Difference& difference) {
    return written([&](const auto& sink) { writePatchHeading(difference, sink); });
}

std::string patch(std::string_view before, std::string_view after,
                  const Difference& difference = modified) {
    return written([&](const auto& sink) { writePatchLines(difference, before, after, sink); });
}

std::string binary(const Difference& difference) {
    return written([&](const auto& sink) { writeBinaryRemark(difference, sink); });
}

/// One line a letter.
std::string letters(std::string_view letters) {
    std::string text;
    for (const char letter : letters)
        text += {letter, '\n'};
    return text;
}

TEST(PatchHeading, TellsWhatHappenedToTheFile) {
    EXPECT_EQ(heading(modified), "diff --git a/plan b/plan\n");
    EXPECT_EQ(heading({L"plan", {}, {}, somewhere}),
              "diff --git a/plan b/plan\nnew file mode 100644\n");
    EXPECT_EQ(heading({L"plan", {}, somewhere, {}}),
              "diff --git a/plan b/plan\ndeleted file mode 100644\n");
    EXPECT_EQ(heading({L"new", L"old", somewhere, somewhere}),
              "diff --git a/old b/new\nrename from old\nrename to new\n");
}

TEST(PatchHeading, QuotesNamesThatAProgramCouldMisread) {
    EXPECT_EQ(heading({L"b \\\"\n", L"\u00E4/\x7F\t'", somewhere, somewhere}),
              "diff --git \"a/ä/\\177\\011'\" \"b/b \\\\\\\"\\012\"\n"
              "rename from \"ä/\\177\\011'\"\n"
              "rename to \"b \\\\\\\"\\012\"\n");
    EXPECT_EQ(heading({OdString::fromNarrow("\xFC"), {}, somewhere, elsewhere}),
              "diff --git a/\xFC b/\xFC\n");
}

TEST(PatchLines, ShowThreeLinesAroundAChange) {
    EXPECT_EQ(patch(letters("abcdefghij"), letters("abcdeXghij")),
              "--- a/plan\n+++ b/plan\n@@ -3,7 +3,7 @@\n c\n d\n e\n-f\n+X\n g\n h\n i\n");
}

TEST(PatchLines, StopAtTheEndsOfTheText) {
    EXPECT_EQ(patch(letters("ab"), letters("Xb")),
              "--- a/plan\n+++ b/plan\n@@ -1,2 +1,2 @@\n-a\n+X\n b\n");
    EXPECT_EQ(patch(letters("a"), letters("ab")),
              "--- a/plan\n+++ b/plan\n@@ -1 +1,2 @@\n a\n+b\n");
}

TEST(PatchLines, ShareAPlaceWhenTheirSurroundingsMeet) {
    EXPECT_EQ(patch(letters("abcdefghijklmn"), letters("abcXefghijXlmn")),
              "--- a/plan\n+++ b/plan\n@@ -1,14 +1,14 @@\n a\n b\n c\n-d\n+X\n e\n f\n g\n h\n i\n "
              "j\n-k\n+X\n l\n m\n n\n");
    EXPECT_EQ(patch(letters("abcdefghijklmno"), letters("abcXefghijkXmno")),
              "--- a/plan\n+++ b/plan\n@@ -1,7 +1,7 @@\n a\n b\n c\n-d\n+X\n e\n f\n g\n"
              "@@ -9,7 +9,7 @@\n i\n j\n k\n-l\n+X\n m\n n\n o\n");
}

TEST(PatchLines, CountWhatWasAddedBefore) {
    EXPECT_EQ(patch(letters("abcdefghij"), letters("XYabcdefghi")),
              "--- a/plan\n+++ b/plan\n@@ -1,3 +1,5 @@\n+X\n+Y\n a\n b\n c\n"
              "@@ -7,4 +9,3 @@\n g\n h\n i\n-j\n");
}

TEST(PatchLines, NameTheSideThatIsThere) {
    EXPECT_EQ(patch("", "a\n", {L"plan", {}, {}, somewhere}),
              "--- /dev/null\n+++ b/plan\n@@ -0,0 +1 @@\n+a\n");
    EXPECT_EQ(patch("a\nb\n", "", {L"plan", {}, somewhere, {}}),
              "--- a/plan\n+++ /dev/null\n@@ -1,2 +0,0 @@\n-a\n-b\n");
    EXPECT_EQ(patch("a\n", "b\n", {L"new", L"old", somewhere, elsewhere}),
              "--- a/old\n+++ b/new\n@@ -1 +1 @@\n-a\n+b\n");
}

TEST(PatchLines, TellThatTheLastLineHasNoEnd) {
    EXPECT_EQ(
        patch("a\nb", "a\nb\n"),
        "--- a/plan\n+++ b/plan\n@@ -1,2 +1,2 @@\n a\n-b\n\\ No newline at end of file\n+b\n");
    EXPECT_EQ(
        patch("a\nb", "c\nb"),
        "--- a/plan\n+++ b/plan\n@@ -1,2 +1,2 @@\n-a\n+c\n b\n\\ No newline at end of file\n");
}

TEST(PatchLines, KeepCarriageReturnsAndControlCharacters) {
    EXPECT_EQ(patch("a\r\n\x1B[0m\n", "a\n\x1B[0m\n"),
              "--- a/plan\n+++ b/plan\n@@ -1,2 +1,2 @@\n-a\r\n+a\n \x1B[0m\n");
}

TEST(PatchLines, AreNoneForEqualTexts) {
    EXPECT_EQ(patch("a\n", "a\n"), "");
    EXPECT_EQ(patch("", "", {L"plan", {}, {}, somewhere}), "");
}

TEST(PatchLines, SayWhichKindTheyAre) {
    std::string kinds;
    writePatchLines(modified, "a\nb", "a\nc\n", [&kinds](PatchLine kind, std::string_view) {
        kinds += "hp -+r"[static_cast<std::size_t>(kind)];
    });
    EXPECT_EQ(kinds, "hhp -r+");
}

TEST(BinaryRemark, TellsTheSizes) {
    EXPECT_EQ(binary(modified), "Binary files a/plan and b/plan differ (12 and 34 bytes)\n");
    EXPECT_EQ(binary({L"a b", {}, {}, somewhere}),
              "Binary files /dev/null and \"b/a b\" differ (0 and 12 bytes)\n");
    EXPECT_EQ(binary({L"plan", {}, somewhere, {}}),
              "Binary files a/plan and /dev/null differ (12 and 0 bytes)\n");
}

}  // namespace
