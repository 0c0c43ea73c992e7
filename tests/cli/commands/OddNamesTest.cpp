#include <engine/base/Printable.h>
#include <engine/paths/RelativePath.h>
#include <tests/cli/commands/HistoryProject.h>
#include <tests/support/Effort.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace {

using qrv_test::HistoryProject;
using qrv_test::Outcome;

std::string shown(const std::string& name) {
    return qrv::printable(OdString::fromNarrow(name)).toNarrow();
}

/// What means something to a shell, to expressions, to the parser of the command line, to formats
/// of messages, to terminals, or to nobody.
constexpr const char* oddWords[] = {"--",
                                    "-",
                                    "-x",
                                    "--all",
                                    "--json",
                                    "-0",
                                    "-h",
                                    "--help",
                                    "--path",
                                    "-m",
                                    "++",
                                    "{}",
                                    "%%",
                                    "[]",
                                    "[a,b]",
                                    "[a]",
                                    "[[a]]",
                                    "[a, b]",
                                    "(a*)*b",
                                    "[a",
                                    "a]",
                                    "*.txt",
                                    "**",
                                    "?",
                                    "a?.txt",
                                    "$(id)",
                                    "`id`",
                                    "$HOME",
                                    "~",
                                    "!x",
                                    "#x",
                                    "status",
                                    "HEAD",
                                    "add",
                                    "%s%n%ls",
                                    "a=b",
                                    "--to=x",
                                    "-C",
                                    "@{1}",
                                    "^",
                                    "|",
                                    "'",
                                    "\"",
                                    "a\nb",
                                    "a\rb",
                                    "\x1B[31m",
                                    "sch\xE4"
                                    "den",
                                    "\xFF",
                                    "\xC3",
                                    "\u202Eab",
                                    "\u200B",
                                    "e\u0301",
                                    "\U0001F4D0",
                                    "a\tb",
                                    " a",
                                    "a,b",
                                    "a;b",
                                    "a&b",
                                    "<a>",
                                    "x=[y]",
                                    "[x]=",
                                    "=",
                                    ","};

/// Those, and names with each odd character somewhere.
std::set<std::string> oddNames() {
    std::set<std::string> names(std::begin(oddWords), std::end(oddWords));
    const std::string odd = "!\"#$%&'()*+,;<=>?@[]^_`{|}~ \t\n\x01\x7F\xE4-";
    for (const char each : odd) {
        const std::string one(1, each);
        for (const std::string& name :
             {one + "plan", "pl" + one + "an", "plan" + one, one + "plan" + one, one + one + "p"})
            names.insert(name);
    }
    std::erase_if(names, [](const std::string& name) {
        return !qrv::RelativePath::check(OdString::fromNarrow(name));
    });
    return names;
}

using Names = std::vector<std::string>;

/// Some at a time, in the order in which commands list them.
std::vector<Names> inGroups(const std::set<std::string>& names) {
    constexpr std::size_t atATime = 15;
    std::vector<Names> groups(1);
    for (const std::string& name : names) {
        if (groups.back().size() == atATime)
            groups.emplace_back();
        groups.back().push_back(name);
    }
    for (Names& group : groups)
        std::sort(group.begin(), group.end(), [](const auto& one, const auto& other) {
            return OdString::fromNarrow(one) < OdString::fromNarrow(other);
        });
    return groups;
}

Names operator+(Names words, const Names& more) {
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

/// All of them are committed, and changed since.
class OddNames : public testing::Test {
protected:
    OddNames() {
        for (const char* const version : {"old", "new"}) {
            // Those that a list or an expression would mean.
            project.write({{"a", version}, {"b", version}, {"plan", version}, {"x", version}});
            for (const std::string& name : names)
                project.write({{name, version}});
            if (version == std::string("old"))
                project.commit("All");
        }
    }

    const std::set<std::string> names = oddNames();
    const HistoryProject project;
};

// A word in brackets was taken for a list: `restore --force '[plan]'` replaced the file "plan".
TEST_F(OddNames, MeanTheFilesOfExactlyThoseNames) {
    EXPECT_GE(names.size(), 200U);
    for (const Names& group : inGroups(names)) {
        std::string added;
        std::string restored;
        std::string compared;
        Names options;
        for (const std::string& name : group) {
            added += "  modified  " + shown(name) + "\n";
            restored += "  " + shown(name) + "\n";
            compared += name + std::string(1, '\0');
            options.push_back("--path=" + name);
        }
        const std::string count = std::to_string(group.size()) + "\n";
        EXPECT_EQ(project.qrv(Names{"add", "--"} + group),
                  (Outcome{0, added + "Staged: " + count, ""}));
        EXPECT_EQ(project.qrv(Names{"unstage", "--"} + group),
                  (Outcome{0, "Taken off the stage: " + count, ""}));
        EXPECT_EQ(project.qrv(Names{"restore", "--force", "--dry-run", "--"} + group),
                  (Outcome{0, restored + "Files that would be restored: " + count, ""}));
        EXPECT_EQ(project.qrv(Names{"diff", "--names", "-0"} + options),
                  (Outcome{0, compared, ""}));
    }
    qrv_test::tellTried(4 * names.size(), "attacks");
}

TEST_F(OddNames, MeanTheSameToEveryCommandThatTakesOnePath) {
    for (const std::string name : {"--", "-x", "--help", "++", "{}", "%%", "[a,b]", "[a]", "x=[y]",
                                   "a\nb", "\xFF", "*plan", "status"}) {
        EXPECT_EQ(project.qrv({"show", "HEAD:" + name}), (Outcome{0, "old", ""}));
        EXPECT_EQ(project.qrv({"log", "--path=" + name}).status, 0) << name;
        EXPECT_EQ(project.qrv({"resolve", "--merged", "--", name}),
                  (Outcome{1, "", "qrv: '" + shown(name) + "' has no conflict\n"}));
        EXPECT_EQ(project.qrv({"ignore", "check", "--", name}).status, 1) << name;
        const std::string missing = "missing " + name;
        EXPECT_NE(project.qrv({"status", "--", missing}).messages.find(shown(missing)),
                  std::string::npos)
            << name;
    }
}

TEST_F(OddNames, ChangeOnlyTheFileThatTheyName) {
    const Names chosen = {"[a,b]", "[a]", "x=[y]", "[x]=", "++", "{}", "--all", "*plan"};
    EXPECT_EQ(project.qrv(Names{"restore", "--force", "--"} + chosen).status, 0);
    for (const std::string& name : chosen)
        EXPECT_EQ(qrv_test::readFile(project / name), "old") << name;
    for (const char* const name : {"a", "b", "plan", "x"})
        EXPECT_EQ(qrv_test::readFile(project / name), "new") << name;
}

// An empty value behind "=" was missing to the parser, which took the next word instead.
TEST_F(OddNames, AreNotTakenForAMissingValue) {
    EXPECT_EQ(project.qrv({"restore", "--from=", "a"}).status, 1);
    EXPECT_EQ(project.qrv({"-C", "", "status"}).status, 1);
    EXPECT_EQ(project.qrv({"log", "--path=", "HEAD"}).status, 1);
}

}  // namespace
