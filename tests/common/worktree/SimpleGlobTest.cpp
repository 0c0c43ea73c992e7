#include <common/worktree/SimpleGlobInternal.h>

#include <gmock/gmock.h>

#include <chrono>
#include <locale>
#include <random>
#include <regex>
#include <string>
#include <vector>

namespace {

using common::SimpleGlob;

SimpleGlob simpleGlob(const std::string& pattern) {
    return SimpleGlob::from(OdString::fromNarrow(pattern)).value();
}

/// The expression that a glob stands for.
std::regex expressionOf(const std::string& pattern) {
    std::string text = "^";
    for (const char byte : pattern)
        text += byte == '*' ? ".*" : byte == '?' ? "." : byte == '.' ? "\\." : std::string(1, byte);
    std::regex expression;
    expression.imbue(std::locale::classic());
    expression.assign(text + "$", std::regex::ECMAScript | std::regex::icase);
    return expression;
}

/// All texts over the alphabet up to the length, shortest first.
std::vector<std::string> allTexts(const std::string& alphabet, std::size_t length) {
    std::vector<std::string> texts = {""};
    std::size_t begin = 0;
    for (std::size_t size = 1; size <= length; ++size) {
        const std::size_t end = texts.size();
        for (; begin < end; ++begin) {
            for (const char byte : alphabet)
                texts.push_back(texts[begin] + byte);
        }
    }
    return texts;
}

std::string randomText(std::mt19937& random, const std::string& alphabet, std::size_t length) {
    std::uniform_int_distribution<std::size_t> index(0, alphabet.size() - 1);
    std::string text(length, '\0');
    for (char& byte : text)
        byte = alphabet[index(random)];
    return text;
}

/// The names for which the glob and its expression disagree.
std::vector<std::string> disagreements(const std::string& pattern,
                                       const std::vector<std::string>& names) {
    const SimpleGlob glob = simpleGlob(pattern);
    const std::regex expression = expressionOf(pattern);
    std::vector<std::string> found;
    for (const std::string& name : names) {
        if (glob.matches(name) != std::regex_match(name, expression))
            found.push_back(name);
    }
    return found;
}

}  // namespace

TEST(SimpleGlob, IsMadeOfLinesWithoutExpressionCharacters) {
    for (const char* line : {"*.bak", "a", "*", "??", "a b-c_d,e;f~!@%&='\"<>:#", "caf\xC3\xA9",
                             "\xFF", "a/b", "\r", " "})
        EXPECT_TRUE(SimpleGlob::from(OdString::fromNarrow(line)).has_value()) << line;
}

TEST(SimpleGlob, IsNotMadeOfLinesThatNeedAnExpression) {
    for (const char* line :
         {"^a", "a^", "a$", "a\\b", "a+", "(a", "a)", "[a", "a]", "{a", "a}", "a|b"})
        EXPECT_FALSE(SimpleGlob::from(OdString::fromNarrow(line)).has_value()) << line;
    EXPECT_FALSE(SimpleGlob::from(std::wstring(L"a\0b", 3)).has_value());
}

TEST(SimpleGlob, AnswersAsTheExpressionForAllShortTexts) {
    const std::vector<std::string> names = allTexts("aAb.\n\r\xC3", 4);
    for (const std::string& pattern : allTexts("aAb*?.\r", 3))
        EXPECT_THAT(disagreements(pattern, names), testing::IsEmpty()) << pattern;
}

TEST(SimpleGlob, AnswersAsTheExpressionForLongerPatternsOfStars) {
    const std::vector<std::string> names = allTexts("ab\r", 5);
    for (const std::string& pattern : allTexts("a*\r?", 5)) {
        if (pattern.find('*') != pattern.npos) {
            EXPECT_THAT(disagreements(pattern, names), testing::IsEmpty()) << pattern;
        }
    }
}

TEST(SimpleGlob, AnswersAsTheExpressionForRandomLongerTexts) {
    std::mt19937 random(20240305);
    for (int round = 0; round < 2000; ++round) {
        const std::string pattern = randomText(random, "aAbB*?.-\r\xC3\xA9", 1 + random() % 10);
        std::vector<std::string> names;
        for (int i = 0; i < 20; ++i)
            names.push_back(randomText(random, "aAbB.-\r\n\xC3\xA9", random() % 24));
        EXPECT_THAT(disagreements(pattern, names), testing::IsEmpty()) << pattern;
    }
}

TEST(SimpleGlob, AnswersAsTheExpressionForEveryByte) {
    std::vector<std::string> names;
    for (int byte = 0; byte < 256; ++byte)
        names.push_back(std::string(1, static_cast<char>(byte)));
    for (int byte = 1; byte < 128; ++byte) {
        const std::string pattern(1, static_cast<char>(byte));
        if (SimpleGlob::from(OdString::fromNarrow(pattern))) {
            EXPECT_THAT(disagreements(pattern, names), testing::IsEmpty()) << byte;
        }
    }
}

TEST(SimpleGlob, NeedsNoTimeForHostilePatterns) {
    const SimpleGlob stars = simpleGlob("*a*a*a*a*b*c");
    const SimpleGlob many = simpleGlob(std::string(1000, '*') + "b?");
    const std::string name(120, 'a');
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(stars.matches(name + "c"));
    EXPECT_FALSE(many.matches(name + "x"));
    EXPECT_TRUE(stars.matches(name + "bc"));
    // An expression needs minutes for the first alone; this bound is wide enough for any machine.
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(100));
}
