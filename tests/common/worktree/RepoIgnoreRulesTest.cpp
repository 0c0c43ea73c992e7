#include <tests/common/worktree/RepoIgnoreFixture.h>

#include <stdexcept>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* heading = "An error occurred while parsing the ignored file:";

class RepoIgnoreRules : public qrv_test::RepoIgnoreFixture {};

/// What the expression library says about a wrong expression.
std::string complaintAbout(const std::string& expression) {
    try {
        static_cast<void>(std::regex(expression));
    } catch (const std::regex_error& error) {
        return error.what();
    }
    throw std::logic_error("the expression is right: " + expression);
}

}  // namespace

TEST_F(RepoIgnoreRules, HasNoRulesFromCommentsAndEmptyLines) {
    repository.writeRules("#*.bak\n\n# \n##\n#^[\n");
    EXPECT_THAT(load(), IsEmpty());
    EXPECT_THAT(messages, IsEmpty());
    repository.writeRules("");
    EXPECT_THAT(load(), IsEmpty());
    EXPECT_THAT(messages, IsEmpty());
}

TEST_F(RepoIgnoreRules, ReadsTheLastLineWithAndWithoutALineFeed) {
    for (const char* text : {"*.a\n*.b\n", "*.a\n*.b", "*.a\r\n*.b\r\n", "\n*.a\n\n*.b\n\n"}) {
        repository.writeRules(text);
        const std::vector<std::regex> rules = load();
        ASSERT_EQ(rules.size(), 2U) << text;
        EXPECT_TRUE(std::regex_match("x.a", rules[0])) << text;
        EXPECT_TRUE(std::regex_match("x.b", rules[1])) << text;
    }
}

TEST_F(RepoIgnoreRules, MatchesGlobsInAnyLetterCaseAndExpressionsExactly) {
    EXPECT_THAT(matched("*.DWL", {"a.dwl", "a.DWL", "a.Dwl"}),
                ElementsAre("a.dwl", "a.DWL", "a.Dwl"));
    EXPECT_THAT(matched("^.*\\.DWL$", {"a.dwl", "a.DWL", "a.Dwl"}), ElementsAre("a.DWL"));
    EXPECT_THAT(matched("[a-c]*", {"Bx", "bx", "dx"}), ElementsAre("Bx", "bx"));
}

TEST_F(RepoIgnoreRules, TranslatesEachCharacterOfAGlob) {
    struct Case {
        const char* line;
        std::vector<std::string> names;
        std::vector<std::string> found;
    };
    const std::vector<Case> cases = {
        {"*.bak", {"a.bak", ".bak", "abak", "a.bak2", "x/a.bak"}, {"a.bak", ".bak", "x/a.bak"}},
        {"*", {"", "a", "a\nb", "a\rb"}, {"", "a"}},
        {"a?c", {"ac", "abc", "abbc", "a\nc", "a/c"}, {"abc", "a/c"}},
        {"?", {"\xC3\xA9", "e"}, {"e"}},
        {"??", {"\xC3\xA9", "e"}, {"\xC3\xA9"}},
        {"a.c", {"abc", "a.c"}, {"a.c"}},
        {"a/b", {"a/b", "a\\b"}, {"a/b"}},
        {"a+b", {"a+b", "ab", "aab"}, {"ab", "aab"}},
        {"*[-+]*.txt", {"a-b.txt", "+.txt", "a.txt", "a-b.tx"}, {"a-b.txt", "+.txt"}},
        {"(a|b)c", {"ac", "bc", "(a|b)c"}, {"ac", "bc"}},
        {"a\\*", {"a.", "a*", "ax"}, {"a."}},
        {"a$", {"a", "a$"}, {"a"}},
        {"a|b", {"a", "b", "a|b"}, {"a", "b"}},
        {"a{2}", {"aa", "a{2}"}, {"aa"}},
        {" a ", {" a ", "a", " A "}, {" a ", " A "}},
        {"  ", {"  ", " ", ""}, {"  "}},
        {"!a", {"!a", "a"}, {"!a"}},
        {" #a", {" #a", "#a"}, {" #a"}},
        {"\xC3\xA9", {"\xC3\xA9", "\xC3\x89"}, {"\xC3\xA9"}},
        {"\xFF*", {"\xFFx", "x"}, {"\xFFx"}},
    };
    for (const Case& entry : cases)
        EXPECT_EQ(matched(entry.line, entry.names), entry.found) << entry.line;
}

TEST_F(RepoIgnoreRules, TakesAWholeLineForAnExpression) {
    EXPECT_THAT(matched("^a.c", {"abc", "ABC", "abcd", "^a.c"}), ElementsAre("abc"));
    EXPECT_THAT(matched("^a*", {"", "a", "aa", "ab"}), ElementsAre("", "a", "aa"));
    EXPECT_THAT(matched("^(build|out)$", {"build", "out", "Build"}), ElementsAre("build", "out"));
    EXPECT_THAT(matched(" ^a", {" ^a", "a"}), IsEmpty());
}

TEST_F(RepoIgnoreRules, TellsTheLineOfAWrongExpression) {
    repository.writeRules("^[\n");
    EXPECT_THAT(load(), IsEmpty());
    EXPECT_THAT(messages, ElementsAre(heading, "Line 1: " + complaintAbout("^[")));
}

TEST_F(RepoIgnoreRules, KeepsTheValidLinesAmongWrongOnes) {
    repository.writeRules("*.a\n^(\n# comment\n\n*[\n*.b\n+(%i%ls\n^*.c\n*.d");
    const std::vector<std::regex> rules = load();
    ASSERT_EQ(rules.size(), 3U + (messages.size() == 4U ? 1U : 0U));
    EXPECT_TRUE(std::regex_match("x.A", rules[0]));
    EXPECT_TRUE(std::regex_match("x.B", rules[1]));
    EXPECT_TRUE(std::regex_match("x.D", rules.back()));
    ASSERT_GE(messages.size(), 4U);
    EXPECT_EQ(messages[0], heading);
    EXPECT_EQ(messages[1], "Line 2: " + complaintAbout("^("));
    EXPECT_EQ(messages[2], "Line 5: " + complaintAbout("^.*[$"));
    EXPECT_EQ(messages[3], "Line 7: " + complaintAbout("^+(%i%ls$"));
}

TEST_F(RepoIgnoreRules, CompilesLinesUpToTwoThousandUnits) {
    const std::string tooLong =
        "Line 1: " + std::string(std::regex_error(std::regex_constants::error_complexity).what());
    for (const char* first : {"a", "^", "("}) {
        repository.writeRules(std::string(first) + std::string(2000, 'a') + "\n*.b\n");
        EXPECT_EQ(load().size(), 1U) << first;
        EXPECT_THAT(messages, ElementsAre(heading, tooLong)) << first;
    }
    repository.writeRules(std::string(2000, 'a') + "\n#" + std::string(5000, '(') + "\n");
    EXPECT_TRUE(std::regex_match(std::string(2000, 'A'), load().at(0)));
    EXPECT_THAT(messages, IsEmpty());
}

// Symptom: "a{0000000002}" was refused, and "^a{10000000000}" in other words than the library's.
// Cause: any long row of digits behind a brace or a backslash was taken for one that overflows.
TEST_F(RepoIgnoreRules, LeavesNumbersToTheExpressionLibrary) {
    for (const char* line : {"^a{10000000000}", "^(a)\\1234567890", "^a{3,2}"}) {
        repository.writeRules(line);
        EXPECT_THAT(load(), IsEmpty()) << line;
        EXPECT_THAT(messages, ElementsAre(heading, "Line 1: " + complaintAbout(line))) << line;
    }
    for (const char* line :
         {"^a{99999999999999999999}", "^a{1,99999999999999999999}", "^(a)\\99999999999999999999"}) {
        repository.writeRules(line);
        EXPECT_THAT(load(), IsEmpty()) << line;
        EXPECT_THAT(messages, testing::SizeIs(2)) << line;
    }
    for (const char* line :
         {"12345678901,12345678901", "^\\\\12345678901", "^a{2,3}", "^(a)\\1", "^[{1234567890]$",
          "a{0000000002}", "^\\00123456789$", "^\\\\{12345678901"}) {
        repository.writeRules(line);
        EXPECT_EQ(load().size(), std::string(line).ends_with("{12345678901") ? 0U : 1U) << line;
    }
}

TEST_F(RepoIgnoreRules, SurvivesHostileLines) {
    const std::vector<std::string> lines = {
        "^" + std::string(1000, '(') + std::string(999, ')'),
        std::string(999, '(') + "a" + std::string(1000, ')'),
        "^" + std::string(999, '(') + "a" + std::string(999, ')'),
        std::string(2000, '('),
        std::string(2000, '['),
        std::string(2000, '*'),
        std::string(2000, '?'),
        std::string(2000, '|'),
        std::string(2000, '+'),
        std::string("^a\0b", 4),
        "^(a{1000}){1000}",
        "^a{99999999999999999999}",
        "^\\",
        "^\\99",
        "\\",
        "^(?=",
        std::string("\x00\x01\x7F\x80\xFF", 5),
        "10 MB: " + std::string(10000000, 'x'),
    };
    for (const std::string& line : lines) {
        repository.writeRules(line + "\n*.b\n");
        const std::vector<std::regex> rules = load();
        ASSERT_FALSE(rules.empty()) << line.substr(0, 40);
        EXPECT_TRUE(std::regex_match("x.b", rules.back())) << line.substr(0, 40);
        EXPECT_EQ(rules.size() + (messages.empty() ? 0U : 1U), 2U) << line.substr(0, 40);
    }
}
