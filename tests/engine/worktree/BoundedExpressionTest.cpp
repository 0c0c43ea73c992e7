#include <engine/worktree/BoundedExpression.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <regex>
#include <string>
#include <vector>

namespace {

using common::IgnoreLine;
using qrv::BoundedExpression;

IgnoreLine lineOf(const std::string& text) {
    return IgnoreLine(OdString::fromNarrow(text));
}

std::string randomPart(std::mt19937& random, int depth) {
    static const std::vector<std::string> atoms = {"a",  "b",   ".",     "[ab]",  "[^a]", "\\w",
                                                   "()", "\\b", "(?=b)", "(?!a)", "\\1"};
    static const std::vector<std::string> quantifiers = {"",    "",      "*",  "+",   "?",
                                                         "{2}", "{0,3}", "*?", "{2,}"};
    std::string text;
    for (std::uint_fast32_t count = 1 + random() % 3; count > 0; --count) {
        if (depth > 0 && random() % 3 == 0)
            text += "(" + randomPart(random, depth - 1) +
                    (random() % 2 == 0 ? "|" + randomPart(random, depth - 1) : "") + ")";
        else
            text += atoms[random() % 16 < 12 ? random() % 5 : random() % atoms.size()];
        text += quantifiers[random() % quantifiers.size()];
    }
    return text;
}

}  // namespace

TEST(BoundedExpression, AnswersAsTheLibraryWhateverWayItTakes) {
    std::mt19937 random(20240305);
    int matched = 0;
    int unanswered = 0;
    int asked = 0;
    for (int round = 0; round < 300; ++round) {
        const std::string text = (round % 2 == 0 ? "^" : "") + randomPart(random, 2);
        const IgnoreLine line = lineOf(text);
        std::regex plain;
        try {
            plain = line.compiled();
        } catch (const std::regex_error&) {
            EXPECT_THROW(BoundedExpression{line}, std::regex_error) << text;
            continue;
        }
        BoundedExpression expression(line);
        for (const char* name : {"", "a", "b", "ab", "aab", "abab", "ba.a", "a\nb", "bbbbbbb"}) {
            std::int64_t steps = 1'000'000;
            const std::optional<bool> answer = expression.matches(name, steps);
            ++asked;
            if (!answer) {
                ++unanswered;
                continue;
            }
            EXPECT_EQ(*answer, std::regex_match(name, plain)) << text << " " << name;
            matched += *answer ? 1 : 0;
        }
    }
    EXPECT_GT(matched, 200);
    // Those with a back reference beside alternatives.
    EXPECT_LT(unanswered, asked / 10);
}

TEST(BoundedExpression, TakesNoMoreStepsThanThereAre) {
    BoundedExpression expression(lineOf("^(a*)*b$"));
    std::int64_t steps = 50;
    EXPECT_EQ(expression.matches(std::string(200, 'a'), steps), std::nullopt);
    EXPECT_EQ(steps, 0);
    steps = 1'000'000;
    EXPECT_EQ(expression.matches(std::string(200, 'a'), steps), false);
    EXPECT_GT(steps, 0);
    EXPECT_LT(steps, 1'000'000);
}

// Symptom: a rule of nested groups ended the process. Cause: the library recurses for every state
// that a letter goes through, here some hundred times for each.
TEST(BoundedExpression, NeedsLittleStack) {
    std::string groups(300, '(');
    groups += "a" + std::string(300, ')') + "*";
    for (const std::string& text :
         {"^" + groups, std::string("^(a?){500}$"), std::string("^((?:|){500}a)*$"),
          "^(" + std::string(900, '|') + "a)*$"}) {
        BoundedExpression expression(lineOf(text));
        std::int64_t steps = 10'000'000;
        EXPECT_EQ(expression.matches(std::string(255, 'a'), steps).value_or(true), true) << text;
    }
}
