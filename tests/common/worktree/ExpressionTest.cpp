#include <common/worktree/ExpressionInternal.h>
#include <common/worktree/ExpressionSizeInternal.h>
#include <tests/support/SmallStack.h>

#include <gmock/gmock.h>

#include <chrono>
#include <random>
#include <regex>
#include <string>
#include <vector>

namespace {

using common::compiledExpression;
using common::Expression;
using common::expressionSize;
using qrv_test::runInThread;

constexpr std::size_t smallStack = 512 * 1024;

/// What the expression library itself makes of the text: its complaint, or nothing.
std::string complaintOfLibrary(const std::string& text) {
    try {
        static_cast<void>(std::regex(text));
    } catch (const std::regex_error& error) {
        return error.what();
    }
    return {};
}

std::string complaint(const std::string& text) {
    try {
        static_cast<void>(compiledExpression(text));
    } catch (const std::regex_error& error) {
        return error.what();
    }
    return {};
}

Expression expressionOf(const std::string& text) {
    return Expression(text, {}, compiledExpression(text));
}

std::string repeated(const std::string& part, int count) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += part;
    return text;
}

/// A random expression of parts that nest, so that most are right.
std::string randomExpression(std::mt19937& random, int depth) {
    static const std::vector<std::string> atoms = {
        "a", "b", ".", "[ab]", "[^a]", "\\w", "\\.", "[^\\n]", "(?:)", "()", "\\b", "$", "^"};
    static const std::vector<std::string> quantifiers = {"",    "",      "",     "*",  "+",  "?",
                                                         "{2}", "{0,2}", "{1,}", "*?", "+?", "??"};
    std::string text;
    for (std::uint_fast32_t count = 1 + random() % 3; count > 0; --count) {
        if (depth > 0 && random() % 3 == 0) {
            static const std::vector<std::string> openings = {"(", "(?:", "(?=", "(?!"};
            text += openings[random() % 12 < 10 ? random() % 2 : 2 + random() % 2];
            text += randomExpression(random, depth - 1);
            if (random() % 2 == 0)
                text += "|" + randomExpression(random, depth - 1);
            text += ")";
        } else {
            text += atoms[random() % 20 < 14 ? random() % 4 : random() % atoms.size()];
        }
        text += quantifiers[random() % quantifiers.size()];
    }
    return text;
}

}  // namespace

// Symptom: "^[{1234567890]$", "a{0000000002}" and "^\00123456789$" were refused as too complex.
// Cause: every long row of digits behind a brace or backslash counted as a number that overflows.
TEST(CompiledExpression, TakesLongRowsOfDigitsThatAreNoLargeNumber) {
    for (const char* text :
         {"^[{1234567890]$", "a{0000000002}", R"(^\00123456789$)", R"(^[\]{99999999999999999999]$)",
          "^[[:alpha:]{99999999999999999999]$", R"(^\c{99999999999999999999$)",
          R"(^\\99999999999999999999$)", R"(^\x4199999999999999999999$)",
          "^a{2}99999999999999999999$", "99999999999999999999", R"(^\{99999999999999999999$)",
          R"(^\c\1111111111111111111111$)"})
        EXPECT_EQ(complaint(text), complaintOfLibrary(text)) << text;
    EXPECT_TRUE(std::regex_match("aa", compiledExpression("a{0000000002}")));
    EXPECT_TRUE(std::regex_match("{", compiledExpression("^[{1234567890]$")));
    EXPECT_TRUE(std::regex_match(std::string("\0", 1) + "0123456789",
                                 compiledExpression(R"(^\00123456789$)")));
}

// Symptom: "^(a)\1234567890" and "^a{10000000000}" were refused in other words than the library's.
// Cause: they never came to the library.
TEST(CompiledExpression, LeavesTheWordsToTheLibrary) {
    for (const char* text : {R"(^(a)\1234567890)", "^a{10000000000}", "^a{1,10000000000}", "^[",
                             "^a{2,1}", R"(^(a)\9223372036854775807)"}) {
        EXPECT_NE(complaint(text), "") << text;
        EXPECT_EQ(complaint(text), complaintOfLibrary(text)) << text;
    }
}

TEST(CompiledExpression, RefusesANumberThatOverflowsAsTheLargestThatDoesNot) {
    const std::string tooMany = complaintOfLibrary("^a{2147483647}");
    const std::string noGroup = complaintOfLibrary(R"(^(a)\2147483647)");
    ASSERT_NE(tooMany, "");
    ASSERT_NE(noGroup, "");
    for (const char* text : {"^a{9223372036854775808}", "^a{1,99999999999999999999}",
                             "a{00000000000099999999999999999999}"})
        EXPECT_EQ(complaint(text), tooMany) << text;
    for (const char* text : {R"(^(a)\9223372036854775808)", R"(^(a)\99999999999999999999)"})
        EXPECT_EQ(complaint(text), noGroup) << text;
}

TEST(CompiledExpression, TellsWhenTheStackDoesNotSuffice) {
    const std::string deep = repeated("(", 4000) + repeated(")", 4000);
    EXPECT_THROW(runInThread(smallStack, [&] { static_cast<void>(compiledExpression(deep)); }),
                 std::regex_error);
    const std::string parentheses(100'000, '(');
    EXPECT_THROW(static_cast<void>(compiledExpression(parentheses)), std::regex_error);
    const std::string letters = "^" + std::string(100'000, 'a');
    EXPECT_THROW(static_cast<void>(compiledExpression(letters)), std::regex_error);
}

TEST(Expression, AnswersAsTheLibraryDoes) {
    std::mt19937 random(20240305);
    int matched = 0;
    for (int round = 0; round < 1000; ++round) {
        const std::string text = randomExpression(random, 2);
        if (!complaintOfLibrary(text).empty())
            continue;
        const std::regex plain(text);
        const Expression expression = expressionOf(text);
        const std::regex shallow = compiledExpression(text, std::regex_constants::__polynomial);
        for (const char* name : {"", "a", "b", "ab", "aab", "abab", "ba.a", "a\nb", "bbbb"}) {
            const bool expected = std::regex_match(name, plain);
            EXPECT_EQ(expression.matches(name), expected) << text << " " << name;
            EXPECT_EQ(std::regex_match(name, shallow), expected) << text << " " << name;
            matched += expected ? 1 : 0;
        }
    }
    EXPECT_GT(matched, 500);
}

// Instrumented code takes several times as much of the stack.
#ifdef __SANITIZE_ADDRESS__
constexpr int groupsInside = 40;
#else
constexpr int groupsInside = 200;
#endif

// Symptom: a name of some hundred characters ended the process of a host with small stacks.
// Cause: the library recurses for each character, and for each group around it.
TEST(Expression, NeedsNoStackInProportionToTheText) {
    const std::string groups =
        repeated("(", groupsInside) + "a" + repeated(")", groupsInside) + "*";
    runInThread(smallStack, [&] {
        EXPECT_TRUE(expressionOf("^.*[.]dwg$").matches(std::string(100'000, 'a') + ".dwg"));
        EXPECT_FALSE(expressionOf("^.*[.]dwg$").matches(std::string(100'000, 'a') + ".dxf"));
        EXPECT_TRUE(expressionOf(groups).matches(std::string(255, 'a')));
        EXPECT_THROW(
            static_cast<void>(expressionOf(R"((a)*b\1)").matches(std::string(100'000, 'a'))),
            std::regex_error);
        EXPECT_THROW(static_cast<void>(expressionOf("^(a?){9000}$").matches("b")),
                     std::regex_error);
    });
}

TEST(ExpressionSize, CountsRepetitions) {
    EXPECT_LT(expressionSize("^.*\\.(bak|tmp)$"), 50U);
    EXPECT_LT(expressionSize("^[0-9]{4}-[0-9]{2}-[[:alpha:]]+$"), 50U);
    EXPECT_GE(expressionSize("^(a{300}){300}$"), 90'000U);
    EXPECT_GE(expressionSize("^a{300}{300}$"), 90'000U);
    EXPECT_GE(expressionSize("^a{300}{300}{300}{300}{300}$"), 1'000'000'000U);
    EXPECT_GE(expressionSize("^a{99999999999999999999}$"), 1'000'000'000U);
    EXPECT_GE(expressionSize("^[]{]a{1000}$"), 1000U);
    EXPECT_LT(expressionSize("^[{1000}]$"), 20U);
    for (const char* wrong :
         {"(", ")", "[", "[[", "[[:", "{", "a{", "a{1,", "\\", "{{{", "}}", "|"})
        EXPECT_LT(expressionSize(wrong), 100U) << wrong;
}

// The library refuses a machine of more than 100,000 states: what it refuses must count as more.
TEST(ExpressionSize, IsNeverLessThanTheLibraryMakes) {
    for (const std::string part : {"(a|b)?", "(?:a{2}[^a]*?){2}", "((?:)|a|)+", "(?=a|b)\\w"}) {
        std::size_t times = 2;
        while (expressionSize("(" + part + "){" + std::to_string(times) + "}") <= 100'000)
            times += times / 8 + 1;
        times -= times / 8 + 1;
        const std::string text = "(" + part + "){" + std::to_string(times) + "}";
        EXPECT_EQ(complaintOfLibrary(text), "") << text;
    }
}
