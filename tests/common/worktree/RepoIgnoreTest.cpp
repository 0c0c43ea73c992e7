#include <common/worktree/RepoIgnore.h>
#include <platform/ut/ScopedFault.h>
#include <tests/common/worktree/TemporaryRepository.h>

#include <gmock/gmock.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <type_traits>
#include <utility>

namespace {

namespace fs = std::filesystem;

using common::RepoIgnore;
using qrv_test::listTree;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(std::is_copy_assignable_v<RepoIgnore> && std::is_move_assignable_v<RepoIgnore>);

const std::string heading = "An error occurred while parsing the ignored file:";

std::string sample() {
    return qrv_test::readFile(fs::path(QRV_SAMPLES) / "ignore.sample");
}

/// What the expression library says about a wrong expression.
std::string complaintAbout(const std::string& expression) {
    try {
        static_cast<void>(std::regex(expression));
    } catch (const std::regex_error& error) {
        return error.what();
    }
    throw std::logic_error("the expression is right: " + expression);
}

class RepoIgnoreTest : public testing::Test {
protected:
    /// Loads the rules; what `onError` was told is in `messages`.
    std::vector<std::regex> load() {
        messages.clear();
        const auto onError = [this](const OdString& text) { messages.push_back(text.toNarrow()); };
        return RepoIgnore(onError, repository.root).expressions();
    }

    /// The names that the one rule `line` matches.
    std::vector<std::string> matched(const std::string& line,
                                     const std::vector<std::string>& names) {
        repository.writeRules(line);
        const std::vector<std::regex> rules = load();
        std::vector<std::string> found;
        for (const std::string& name : names) {
            if (rules.size() == 1 && std::regex_match(name, rules[0]))
                found.push_back(name);
        }
        return found;
    }

    std::string ignoreFile() const {
        return qrv_test::readFile(repository.folder / ".qrv/properties/ignore");
    }

    qrv_test::TemporaryRepository repository;
    std::vector<std::string> messages;
};

}  // namespace

TEST_F(RepoIgnoreTest, MakesAMissingFileWithExplanationAndDefaults) {
    EXPECT_EQ(load().size(), 3U);
    EXPECT_EQ(ignoreFile(), sample());
    EXPECT_THAT(messages, IsEmpty());
    EXPECT_THAT(listTree(repository.folder.path()),
                ElementsAre(".qrv/", ".qrv/properties/", ".qrv/properties/ignore"));
}

// A link to nothing meant no rules, and none of the defaults were made: it counted as a file.
TEST_F(RepoIgnoreTest, MakesTheFileInPlaceOfALinkToNothing) {
    fs::create_directories(repository.folder / ".qrv/properties");
    fs::create_symlink("nowhere", repository.folder / ".qrv/properties/ignore");
    EXPECT_EQ(load().size(), 3U);
    EXPECT_EQ(ignoreFile(), sample());
}

// Rules were lost when the disk failed for a moment: what could not be asked counted as missing.
TEST_F(RepoIgnoreTest, AreNotWrittenOverWhatNobodyCouldAsk) {
    qrv_test::writeFile(repository.folder / ".qrv/properties/ignore", "*.old\n");
    for (int nth = 1;; ++nth) {
        const ut::ScopedFault fault(nth, EIO);
        static_cast<void>(common::RepoIgnore::write(L"*.new", repository.root));
        EXPECT_EQ(ignoreFile(), "*.old\n") << nth;
        if (!fault.hasFired())
            break;
    }
}

TEST_F(RepoIgnoreTest, HasNoRulesAndStaysSilentWhenTheFileCannotBeMade) {
    qrv_test::writeFile(repository.folder / ".qrv/properties", "a file in the way");
    EXPECT_THAT(load(), IsEmpty());
    EXPECT_THAT(messages, IsEmpty());
    EXPECT_THAT(listTree(repository.folder.path()), ElementsAre(".qrv/", ".qrv/properties"));
}

TEST_F(RepoIgnoreTest, DoesNotBringBackAMetadataFolderThatIsGone) {
    fs::remove_all(repository.folder / ".qrv");
    EXPECT_THAT(load(), IsEmpty());
    EXPECT_THAT(messages, IsEmpty());
    EXPECT_THAT(listTree(repository.folder.path()), IsEmpty());
}

TEST_F(RepoIgnoreTest, HasNoRulesWhenTheFileCannotBeRead) {
    fs::create_directories(repository.folder / ".qrv/properties/ignore");
    EXPECT_THAT(load(), IsEmpty());
    EXPECT_THAT(messages, IsEmpty());
}

TEST_F(RepoIgnoreTest, LeavesNoFileOrAWholeOneWhenACallFails) {
    int failures = 0;
    for (int call = 1;; ++call) {
        fs::remove_all(repository.folder / ".qrv/properties");
        bool hasFired = false;
        std::size_t ruleCount = 0;
        {
            const ut::ScopedFault fault(call, ENOSPC);
            ruleCount = load().size();
            hasFired = fault.hasFired();
        }
        EXPECT_THAT(messages, IsEmpty()) << call;
        EXPECT_THAT(ruleCount, testing::AnyOf(0U, 3U)) << call;
        failures += ruleCount == 0 ? 1 : 0;
        if (fs::exists(repository.folder / ".qrv/properties/ignore")) {
            EXPECT_EQ(ignoreFile(), sample()) << call;
        }
        for (const std::string& path : listTree(repository.folder.path()))
            EXPECT_THAT(path,
                        testing::AnyOf(".qrv/", ".qrv/properties/", ".qrv/properties/ignore"));
        if (!hasFired)
            break;
    }
    EXPECT_GT(failures, 0);
}

TEST_F(RepoIgnoreTest, HasNoRulesFromCommentsAndEmptyLines) {
    repository.writeRules("#*.bak\n\n# \n##\n#^[\n");
    EXPECT_THAT(load(), IsEmpty());
    EXPECT_THAT(messages, IsEmpty());
    repository.writeRules("");
    EXPECT_THAT(load(), IsEmpty());
    EXPECT_THAT(messages, IsEmpty());
}

TEST_F(RepoIgnoreTest, ReadsTheLastLineWithAndWithoutALineFeed) {
    for (const char* text : {"*.a\n*.b\n", "*.a\n*.b", "*.a\r\n*.b\r\n", "\n*.a\n\n*.b\n\n"}) {
        repository.writeRules(text);
        const std::vector<std::regex> rules = load();
        ASSERT_EQ(rules.size(), 2U) << text;
        EXPECT_TRUE(std::regex_match("x.a", rules[0])) << text;
        EXPECT_TRUE(std::regex_match("x.b", rules[1])) << text;
    }
}

TEST_F(RepoIgnoreTest, MatchesGlobsInAnyLetterCaseAndExpressionsExactly) {
    EXPECT_THAT(matched("*.DWL", {"a.dwl", "a.DWL", "a.Dwl"}),
                ElementsAre("a.dwl", "a.DWL", "a.Dwl"));
    EXPECT_THAT(matched("^.*\\.DWL$", {"a.dwl", "a.DWL", "a.Dwl"}), ElementsAre("a.DWL"));
    EXPECT_THAT(matched("[a-c]*", {"Bx", "bx", "dx"}), ElementsAre("Bx", "bx"));
}

TEST_F(RepoIgnoreTest, TranslatesEachCharacterOfAGlob) {
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

TEST_F(RepoIgnoreTest, TakesAWholeLineForAnExpression) {
    EXPECT_THAT(matched("^a.c", {"abc", "ABC", "abcd", "^a.c"}), ElementsAre("abc"));
    EXPECT_THAT(matched("^a*", {"", "a", "aa", "ab"}), ElementsAre("", "a", "aa"));
    EXPECT_THAT(matched("^(build|out)$", {"build", "out", "Build"}), ElementsAre("build", "out"));
    EXPECT_THAT(matched(" ^a", {" ^a", "a"}), IsEmpty());
}

TEST_F(RepoIgnoreTest, TellsTheLineOfAWrongExpression) {
    repository.writeRules("^[\n");
    EXPECT_THAT(load(), IsEmpty());
    EXPECT_THAT(messages, ElementsAre(heading, "Line 1: " + complaintAbout("^[")));
}

TEST_F(RepoIgnoreTest, KeepsTheValidLinesAmongWrongOnes) {
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

TEST_F(RepoIgnoreTest, NeedsACallbackOnlyWhenThereIsSomethingToTell) {
    repository.writeRules("*.a\n");
    EXPECT_EQ(RepoIgnore(nullptr, repository.root).expressions().size(), 1U);
    repository.writeRules("*.a\n^[\n");
    EXPECT_THROW(RepoIgnore(nullptr, repository.root), std::bad_function_call);
}

TEST_F(RepoIgnoreTest, ReleasesTheCallbackWhenItIsDone) {
    const auto owned = std::make_shared<int>(0);
    const RepoIgnore ignore([owned](const OdString&) {}, repository.root);
    EXPECT_EQ(owned.use_count(), 1);
}

TEST_F(RepoIgnoreTest, ReadsTheRulesOnceOnly) {
    repository.writeRules("*.a\n");
    const RepoIgnore ignore(nullptr, repository.root);
    repository.writeRules("*.b\n*.c\n");
    EXPECT_EQ(ignore.expressions().size(), 1U);
    EXPECT_EQ(load().size(), 2U);
}

TEST_F(RepoIgnoreTest, IsAValue) {
    repository.writeRules("*.a\n");
    RepoIgnore ignore(nullptr, repository.root);
    const RepoIgnore copy = ignore;
    const RepoIgnore moved = std::move(ignore);
    EXPECT_TRUE(std::regex_match("x.a", copy.expressions().at(0)));
    EXPECT_TRUE(std::regex_match("x.a", moved.expressions().at(0)));
}

TEST_F(RepoIgnoreTest, ExplainsItselfPlainAndAsComments) {
    const std::string comments = sample().substr(0, sample().find("*.bak"));
    EXPECT_EQ(RepoIgnore::explanation(false).toNarrow(), comments);
    EXPECT_EQ(RepoIgnore::explanation(true).toNarrow(),
              std::regex_replace(comments.substr(1), std::regex("\n#"), "\n"));
    EXPECT_EQ(RepoIgnore::defaultIgnore(), L"*.bak\n*.dwl\n*.dwl2\n");
}

TEST_F(RepoIgnoreTest, WritesTheContentAsItIsAndMakesThePropertiesFolder) {
    EXPECT_TRUE(RepoIgnore::write(L"a\n\n b", repository.root));
    EXPECT_EQ(ignoreFile(), "a\n\n b");
}

TEST_F(RepoIgnoreTest, NeverOverwritesAnExistingFile) {
    repository.writeRules("mine");
    EXPECT_TRUE(RepoIgnore::write(L"other", repository.root));
    EXPECT_EQ(ignoreFile(), "mine");
    repository.writeRules("");
    EXPECT_TRUE(RepoIgnore::write(L"other", repository.root));
    EXPECT_EQ(ignoreFile(), "");
}

TEST_F(RepoIgnoreTest, SaysThatTheFileCannotBeWritten) {
    qrv_test::writeFile(repository.folder / ".qrv/properties", "a file in the way");
    const Expected<void> written = RepoIgnore::write(L"a", repository.root);
    ASSERT_FALSE(written);
    EXPECT_EQ(written.error().message, L"Failed to write Ignore file.");
    EXPECT_EQ(written.error().code, 0);
}

TEST_F(RepoIgnoreTest, CompilesLinesUpToTwoThousandUnits) {
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
TEST_F(RepoIgnoreTest, LeavesNumbersToTheExpressionLibrary) {
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

TEST_F(RepoIgnoreTest, SurvivesHostileLines) {
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
