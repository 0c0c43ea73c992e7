#include <engine/diff/LineDiff.h>
#include <tests/support/Effort.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace qrv {

std::ostream& operator<<(std::ostream& stream, const LineChange& change) {
    return stream << '-' << change.oldFirst << ',' << change.oldCount << " +" << change.newFirst
                  << ',' << change.newCount;
}

}  // namespace qrv

namespace {

using qrv::changesOfLines;
using qrv::LineChange;
using qrv::Lines;
using testing::ElementsAre;
using testing::IsEmpty;

/// One line a letter.
std::string textOf(const std::string& letters) {
    std::string text;
    for (const char letter : letters)
        text += {letter, '\n'};
    return text;
}

std::vector<LineChange> changes(const std::string& before, const std::string& after) {
    return changesOfLines(Lines(before), Lines(after));
}

/// `before` with the changes, or a complaint.
std::string applied(const std::string& before, const std::string& after,
                    const std::vector<LineChange>& changes) {
    const Lines oldLines(before);
    const Lines newLines(after);
    std::string text;
    std::size_t oldNext = 0;
    std::size_t newNext = 0;
    for (const LineChange& change : changes) {
        if (change.oldFirst < oldNext || (&change != changes.data() && change.oldFirst == oldNext))
            return "the changes touch each other";
        for (; oldNext < change.oldFirst; ++oldNext, ++newNext)
            text += oldLines[oldNext];
        if (newNext != change.newFirst || change.oldCount + change.newCount == 0)
            return "a change is in the wrong place";
        oldNext += change.oldCount;
        for (std::size_t count = 0; count < change.newCount; ++count)
            text += newLines[newNext++];
    }
    for (; oldNext < oldLines.size(); ++oldNext)
        text += oldLines[oldNext];
    return text;
}

std::size_t sizeOf(const std::vector<LineChange>& changes) {
    std::size_t size = 0;
    for (const LineChange& change : changes)
        size += change.oldCount + change.newCount;
    return size;
}

/// By the longest common subsequence, as in textbooks.
std::size_t fewestChangedLines(const std::string& before, const std::string& after) {
    std::vector<std::size_t> longest(after.size() + 1);
    for (const char letter : before) {
        std::size_t diagonal = 0;
        for (std::size_t column = 1; column <= after.size(); ++column) {
            const std::size_t above = longest[column];
            longest[column] =
                letter == after[column - 1] ? diagonal + 1 : std::max(above, longest[column - 1]);
            diagonal = above;
        }
    }
    return before.size() + after.size() - 2 * longest.back();
}

void expectFewest(const std::string& before, const std::string& after) {
    const auto found = changes(textOf(before), textOf(after));
    ASSERT_EQ(applied(textOf(before), textOf(after), found), textOf(after))
        << before << " to " << after;
    ASSERT_EQ(sizeOf(found), fewestChangedLines(before, after)) << before << " to " << after;
}

std::string randomLetters(std::mt19937& random, std::size_t length, unsigned differentLetters) {
    std::string letters;
    for (std::size_t count = 0; count < length; ++count)
        letters += static_cast<char>('a' + static_cast<int>(random() % differentLetters));
    return letters;
}

std::string numbers(int first, int last) {
    std::string text;
    for (int number = first; number < last; ++number)
        text += std::to_string(number) + '\n';
    return text;
}

TEST(ChangesOfLines, AreNoneForEqualTexts) {
    EXPECT_THAT(changes("", ""), IsEmpty());
    EXPECT_THAT(changes("a\nb", "a\nb"), IsEmpty());
}

TEST(ChangesOfLines, TellWhereLinesTakeThePlaceOfOthers) {
    EXPECT_THAT(changes(textOf("abcdef"), textOf("abXYef")), ElementsAre(LineChange{2, 2, 2, 2}));
    EXPECT_THAT(changes(textOf("abcdef"), textOf("Xbcdf")),
                ElementsAre(LineChange{0, 1, 0, 1}, LineChange{4, 1, 4, 0}));
    EXPECT_THAT(changes("", textOf("ab")), ElementsAre(LineChange{0, 0, 0, 2}));
    EXPECT_THAT(changes(textOf("ab"), ""), ElementsAre(LineChange{0, 2, 0, 0}));
    EXPECT_THAT(changes(textOf("ab"), textOf("aab")), ElementsAre(LineChange{1, 0, 1, 1}));
}

TEST(ChangesOfLines, CountTheEndOfTheLastLine) {
    EXPECT_THAT(changes("a\nb", "a\nb\n"), ElementsAre(LineChange{1, 1, 1, 1}));
    EXPECT_THAT(changes("a\r\n", "a\n"), ElementsAre(LineChange{0, 1, 0, 1}));
}

TEST(ChangesOfLines, AreTheFewestForAllShortTexts) {
    std::vector<std::string> texts = {""};
    for (std::size_t index = 0; texts[index].size() < 4; ++index) {
        for (const char letter : {'a', 'b', 'c'})
            texts.push_back(texts[index] + letter);
    }
    ASSERT_EQ(texts.size(), 121);
    for (const std::string& before : texts) {
        for (const std::string& after : texts)
            expectFewest(before, after);
    }
}

TEST(ChangesOfLines, AreTheFewestForLongerTexts) {
    std::mt19937 random(1);
    for (int repeat = 0; repeat < 1000; ++repeat) {
        const unsigned letters = 2 + static_cast<unsigned>(random() % 8);
        const std::string before = randomLetters(random, random() % 60, letters);
        expectFewest(before, randomLetters(random, random() % 60, letters));
    }
}

TEST(ChangesOfLines, AreTheFewestWhenAFewLinesOfManyChange) {
    std::mt19937 random(2);
    for (int repeat = 0; repeat < 20; ++repeat) {
        const std::string before = randomLetters(random, 1500, 20);
        std::string after = before;
        for (int edit = 0; edit < 60; ++edit)
            after.replace(random() % after.size(), random() % 3,
                          randomLetters(random, random() % 3, 20));
        expectFewest(before, after);
    }
}

TEST(ChangesOfLines, AreRightButNotAlwaysTheFewestForVeryDifferentTexts) {
    std::mt19937 random(3);
    for (const unsigned letters : {2U, 3U, 20U}) {
        const std::string before = textOf(randomLetters(random, 6000, letters));
        const std::string after = textOf(randomLetters(random, 5000, letters));
        const auto found = changes(before, after);
        EXPECT_EQ(applied(before, after, found), after);
        EXPECT_LT(sizeOf(found), 10'500) << letters;
    }
}

TEST(ChangesOfLines, AreFoundQuicklyWhenAllOf200000LinesDiffer) {
    std::string after = numbers(200'000, 400'000);
    EXPECT_THAT(changes(numbers(0, 200'000), after),
                ElementsAre(LineChange{0, 200'000, 0, 200'000}));
    after += "7\n";
    EXPECT_THAT(changes(numbers(0, 200'000), after),
                ElementsAre(LineChange{0, 7, 0, 200'000}, LineChange{8, 199'992, 200'001, 0}));
}

/// Compared one by one, these would take minutes, and 200,000 hours.
TEST(ChangesOfLines, AreFoundQuicklyForManyLinesInAnotherOrder) {
    const int lines = qrv_test::isExhaustive() ? 200'000 : 50'000;
    std::mt19937 random(4);
    std::string before;
    std::string after;
    for (int count = 0; count < lines; ++count) {
        before += std::to_string(random() % 1000) + '\n';
        after += std::to_string(random() % 1000) + '\n';
    }
    const auto found = changes(before, after);
    EXPECT_EQ(applied(before, after, found), after);
    // The bound of the work ended the search, but not before it had found something.
    EXPECT_GT(found.size(), 1000);
    EXPECT_LT(sizeOf(found), 2 * lines);
}

// Two changed lines of 1,100,000 made a patch of 2,200,001 lines: more than two million lines
// between the common beginning and end were not compared.
TEST(ChangesOfLines, AreTwoWhenTheFirstAndTheLastOfMoreThanAMillionDiffer) {
    const std::string common = numbers(0, 1'000'000);
    EXPECT_THAT(changes("a\n" + common + "b\n", "c\n" + common + "d\n"),
                ElementsAre(LineChange{0, 1, 0, 1}, LineChange{1'000'001, 1, 1'000'001, 1}));
}

TEST(ChangesOfLines, AreOneAsAWholeBeyond25MillionLines) {
    const std::string common(12'500'000, '\n');
    EXPECT_THAT(changes("a\n" + common + "b\n", "c\n" + common + "d\n"),
                ElementsAre(LineChange{0, 12'500'002, 0, 12'500'002}));
}

}  // namespace
