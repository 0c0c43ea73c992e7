#include <common/worktree/IgnoreLine.h>

#include <gmock/gmock.h>

#include <regex>
#include <string>

namespace {

using common::IgnoreLine;

IgnoreLine lineOf(const std::string& text) {
    return IgnoreLine(OdString::fromNarrow(text));
}

}  // namespace

TEST(IgnoreLine, IsARuleUnlessItIsEmptyOrAComment) {
    for (const char* text : {"", "#", "#*.bak"})
        EXPECT_FALSE(lineOf(text).isRule()) << text;
    for (const char* text : {" ", " #", "*.bak", "^a"})
        EXPECT_TRUE(lineOf(text).isRule()) << text;
}

TEST(IgnoreLine, HasTheExpressionThatItStandsFor) {
    EXPECT_EQ(lineOf("*.b?k").expression(), R"(^.*\.b.k$)");
    EXPECT_EQ(lineOf("*.b?k").letterCase(), std::regex::icase);
    EXPECT_EQ(lineOf("^a.*").expression(), "^a.*");
    EXPECT_EQ(lineOf("^a.*").letterCase(), std::regex::flag_type());
    EXPECT_EQ(lineOf("a[b]").expression(), "^a[b]$");
}

TEST(IgnoreLine, TellsPlainGlobsWhichItMatchesItself) {
    EXPECT_TRUE(lineOf("*.bak").isPlainGlob());
    EXPECT_TRUE(lineOf("*.bak").plainGlobMatches("A.BAK"));
    EXPECT_FALSE(lineOf("*.bak").plainGlobMatches("a.bakx"));
    for (const char* text : {"", "#a", "^a", "[a]", "a+"})
        EXPECT_FALSE(lineOf(text).isPlainGlob()) << text;
    EXPECT_FALSE(lineOf(std::string(2001, 'a')).isPlainGlob());
}

TEST(IgnoreLine, TellsItsSizeWithoutCompiling) {
    EXPECT_LT(lineOf("^.*[.]bak$").size(), 30U);
    EXPECT_GT(lineOf("^(a{300}){300}").size(), 90'000U);
}

TEST(IgnoreLine, IsCompiledWithFurtherFlags) {
    EXPECT_TRUE(std::regex_match("AB", lineOf("a[b]").compiled()));
    EXPECT_EQ(lineOf("a[b]").compiled(std::regex::nosubs).flags(),
              std::regex::ECMAScript | std::regex::icase | std::regex::nosubs);
    EXPECT_THROW(static_cast<void>(lineOf("^[").compiled()), std::regex_error);
    EXPECT_THROW(static_cast<void>(lineOf(std::string(2001, 'a')).compiled()), std::regex_error);
}
