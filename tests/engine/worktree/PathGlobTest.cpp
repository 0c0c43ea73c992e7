#include <engine/worktree/PathGlob.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace {

using qrv::PathGlob;

bool matches(const std::string& glob, const std::string& path, const std::string& folder = "") {
    return PathGlob(OdString::fromNarrow(folder), OdString::fromNarrow(glob))
        .matches(OdString::fromNarrow(path));
}

TEST(AGlobOfPaths, MatchesAsPeopleExpect) {
    struct Case {
        const char* glob;
        const char* path;
    };
    const Case accepted[] = {
        {"*.dxf", "a.dxf"},
        {"*", "a"},
        {"*", "a/b/c"},
        {"plans/*", "plans/old/a.dwg"},
        {"pl*", "plans/a.dwg"},
        {"?.dxf", "a.dxf"},
        {"?", "\u00E4"},
        {"?", "\U0001F4D0"},
        {"**", "a/b"},
        {"**/a", "a"},
        {"**/a", "x/y/a"},
        {"a/**/b", "a/b"},
        {"a/**/b", "a/x/y/b"},
        {"a/**", "a/x/y"},
        {"a**b", "a/x/b"},
        {"*a*b*", "xaybz"},
        {"[a].dxf", "[a].dxf"},
        {"a.b", "a.b"},
        {"***", "a/b"},
        {"*/*", "a/b"},
        {"**/*.d?g", "x/y/plan.dwg"},
        {"*b", "abbb"},
        {"", ""},
        {"a+(b)", "a+(b)/c"},
    };
    for (const Case& each : accepted)
        EXPECT_TRUE(matches(each.glob, each.path)) << each.glob << " " << each.path;
    const Case refused[] = {
        {"*.dxf", "a.dxfx"}, {"*.dxf", "x/a.dxf"}, {"?.dxf", ".dxf"},    {"?", "ab"},
        {"?", "/"},          {"a/*", "a"},         {"a/**", "a"},        {"**/a", "xa"},
        {"**/a", "x/ya"},    {"a/**/b", "a/xb"},   {"a.b", "axb"},       {"[a].dxf", "a.dxf"},
        {"*/*", "a"},        {"A*", "a"},          {"pl*/a", "plans/b"}, {"a", "ab"},
    };
    for (const Case& each : refused)
        EXPECT_FALSE(matches(each.glob, each.path)) << each.glob << " " << each.path;
}

TEST(AGlobOfPaths, TakesItsFolderAsItIs) {
    EXPECT_TRUE(matches("*.dxf", "a*b/x.dxf", "a*b"));
    EXPECT_FALSE(matches("*.dxf", "aab/x.dxf", "a*b"));
    EXPECT_TRUE(matches("**/x", "[a]/deep/x", "[a]"));
}

/// The meaning of a glob once more, by trying everything.
bool matchesByTrying(std::string_view glob, std::string_view path) {
    if (glob.empty())
        return path.empty() || path.front() == '/';
    if (glob.starts_with("**")) {
        for (std::size_t length = 0; length <= path.size(); ++length) {
            if (matchesByTrying(glob.substr(2), path.substr(length)))
                return true;
        }
        return false;
    }
    if (glob.front() == '*') {
        for (std::size_t length = 0; length <= path.size(); ++length) {
            if (length > 0 && path[length - 1] == '/')
                return false;
            if (matchesByTrying(glob.substr(1), path.substr(length)))
                return true;
        }
        return false;
    }
    if (path.empty() || (glob.front() == '?' ? path.front() == '/' : path.front() != glob.front()))
        return false;
    return matchesByTrying(glob.substr(1), path.substr(1));
}

void addTexts(std::vector<std::string>& texts, const std::string& characters,
              const std::string& text, std::size_t length) {
    texts.push_back(text);
    if (length == 0)
        return;
    for (const char each : characters)
        addTexts(texts, characters, text + each, length - 1);
}

// "**/" and a row of three stars mean something of their own, and have cases above.
TEST(AGlobOfPaths, AgreesWithTryingEverythingForAllShortTexts) {
    std::vector<std::string> globs;
    std::vector<std::string> paths;
    addTexts(globs, "a/?*", "", 5);
    addTexts(paths, "ab/", "", 4);
    for (const std::string& glob : globs) {
        if (glob.find("**/") != std::string::npos || glob.find("***") != std::string::npos)
            continue;
        const PathGlob ours({}, OdString::fromNarrow(glob));
        for (const std::string& path : paths)
            ASSERT_EQ(ours.matches(OdString::fromNarrow(path)), matchesByTrying(glob, path))
                << glob << " " << path;
    }
}

TEST(AGlobOfPaths, EndsSoonWhateverItIs) {
    const auto begin = std::chrono::steady_clock::now();
    std::string stars;
    for (int count = 0; count < 2000; ++count)
        stars += "**a*";
    EXPECT_FALSE(matches(stars + "b", std::string(4000, 'a')));
    EXPECT_FALSE(matches(std::string(1'000'000, '*') + "b", std::string(4000, 'a')));
    EXPECT_FALSE(matches(std::string(1'000'000, '?'), std::string(4000, 'a')));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

}  // namespace
