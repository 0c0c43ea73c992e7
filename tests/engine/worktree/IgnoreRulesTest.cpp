#include <common/worktree/CollectFiles.h>
#include <common/worktree/RepoIgnore.h>
#include <engine/worktree/IgnoreRules.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace {

using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

/// A repository with these rules.
struct Project {
    explicit Project(const std::string& rules) {
        writeFile(folder / ".qrv/properties/ignore", rules);
    }

    qrv::IgnoreRules rules() {
        return qrv::IgnoreRules(
            root(), [this](const OdString& text) { messages.push_back(text.toNarrow()); });
    }
    common::RootPath root() const { return common::RootPath::get(folder.text(), true).value(); }

    const TemporaryFolder folder;
    std::vector<std::string> messages;
};

std::string linesOf(const qrv::IgnoreRules& rules) {
    std::string lines;
    for (const qrv::IgnoreRule& rule : rules.list())
        lines += std::to_string(rule.line) + " " + rule.text.toNarrow() + "|";
    return lines;
}

TEST(IgnoreRules, CountLinesOfEveryKind) {
    EXPECT_EQ(linesOf(Project("").rules()), "");
    EXPECT_EQ(linesOf(Project("a").rules()), "1 a|");
    EXPECT_EQ(linesOf(Project("\n\n#\na\r\n b \n").rules()), "4 a|5  b |");
}

TEST(IgnoreRules, SkipLinesThatDoNotCompileWhereverTheyStand) {
    const std::string tooLong(2001, 'a');
    EXPECT_EQ(linesOf(Project("^(\na\n[\n" + tooLong + "\nb\n^[").rules()), "2 a|5 b|");
    EXPECT_EQ(linesOf(Project("^(\n^(\n^(").rules()), "");
    // Eleven lines, so that line 1 is not taken for line 11.
    EXPECT_EQ(linesOf(Project("a\n\n\n\n\n\n\n\n\n\n^(\nb").rules()), "1 a|12 b|");
}

TEST(IgnoreRules, AgreeWithTheScan) {
    Project project("*.bak\n^old$\nout?\n[ab].txt\n\xc3\xa4*\nq.*\n^.*[0-9]$\n");
    std::set<std::string> all;
    const std::vector<std::string> names = {"x.bak", "x.BAK", "old",   "OLD",    "out1",
                                            "out",   "a.txt", "A.txt", "c.txt",  "\xc3\xa4z",
                                            "q.x",   "q",     "v7",    "v7.dxf", ".qrv"};
    for (const std::string& name : names) {
        for (const std::string& folder :
             {std::string(), std::string("keep/"), std::string("old/"), std::string("keep/out9/"),
              std::string("deep/q.d/z/"), std::string(".qrv/properties/")}) {
            const std::string path = folder + name;
            if (folder.empty() && (name == "old" || name == ".qrv"))
                continue;
            writeFile(project.folder / path, "");
            all.insert(path);
        }
    }
    std::set<std::string> scanned;
    const auto files = common::collectRepoFiles([](const OdString&) {}, project.root());
    for (const common::File& file : *files)
        scanned.insert(file.path.toNarrow());
    qrv::IgnoreRules rules = project.rules();
    int ignored = 0;
    for (const std::string& path : all) {
        const bool isIgnored = qrv::reasonToIgnore(OdString::fromNarrow(path), rules).has_value();
        EXPECT_EQ(isIgnored, !scanned.contains(path)) << path;
        ignored += isIgnored ? 1 : 0;
    }
    EXPECT_GT(ignored, 20);
    EXPECT_LT(ignored, static_cast<int>(all.size()) - 10);
}

TEST(IgnoreRules, TellWhatTheLibraryTells) {
    Project project("^(\na\n[\nb\n");
    static_cast<void>(project.rules());
    std::vector<std::string> told;
    const auto tell = [&told](const OdString& text) { told.push_back(text.toNarrow()); };
    static_cast<void>(common::RepoIgnore(tell, project.root()));
    ASSERT_EQ(told.size(), 3U);
    EXPECT_EQ(project.messages, told);
}

TEST(IgnoreRules, MakeAMissingFileAsTheLibraryDoes) {
    Project project("");
    std::filesystem::remove(project.folder / ".qrv/properties/ignore");
    EXPECT_EQ(linesOf(project.rules()), "12 *.bak|13 *.dwl|14 *.dwl2|");
}

// Symptom: a status never ended, once rules such as these had come by a merge.
// Cause: the expression library tries all ways through a name, which double with each letter.
TEST(IgnoreRules, AnswerInTimeWhereEachLetterDoublesTheWays) {
    Project project("^(a*)*b$\n^(a|a?)+c$\n(x+x+)+y\n*a*a*a*a*a*a*a*a*a*a*q\n^(a|aa)*(?=d)d$\n");
    qrv::IgnoreRules rules = project.rules();
    const OdString letters(std::wstring(240, L'a'));
    for (int round = 0; round < 20; ++round) {
        EXPECT_EQ(rules.match(letters), nullptr);
        EXPECT_EQ(rules.match(OdString(std::wstring(240, L'x'))), nullptr);
    }
    EXPECT_EQ(rules.match(letters + L"b")->line, 1);
    EXPECT_EQ(rules.match(letters + L"c")->line, 2);
    EXPECT_EQ(rules.match(L"xxxY")->line, 3);
    EXPECT_EQ(rules.match(letters + L"d")->line, 5);
    EXPECT_EQ(project.messages, std::vector<std::string>());
}

// Symptom: reading the rules took minutes and all memory. Cause: every repetition is compiled as
// often as it repeats.
TEST(IgnoreRules, LeaveOutWhatIsTooLarge) {
    std::string text = "*.bak\n";
    for (int line = 0; line < 2000; ++line)
        text += "^(a{300}){300}\n";
    text += "^old[0-9]$\n";
    Project project(text);
    qrv::IgnoreRules rules = project.rules();
    EXPECT_EQ(linesOf(rules), "1 *.bak|2002 ^old[0-9]$|");
    ASSERT_EQ(project.messages.size(), 2000U);
    EXPECT_EQ(
        project.messages[0],
        "Line 2 of the ignore rules is left out, since it would take too much time or memory: "
        "^(a{300}){300}");
}

TEST(IgnoreRules, LeaveOutWhatIsTooMuchTogether) {
    std::string text;
    for (int line = 0; line < 200; ++line)
        text += "^a{1000}$\n";
    text += "*.bak\n";
    Project project(text);
    qrv::IgnoreRules rules = project.rules();
    EXPECT_GT(rules.list().size(), 40U);
    EXPECT_LT(rules.list().size(), 110U);
    EXPECT_EQ(rules.list().back().line, 201);
    EXPECT_EQ(rules.list().size() + project.messages.size(), 201U);
}

TEST(IgnoreRules, LeaveOutARuleThatUsesUpItsSteps) {
    Project project("^(a*)*\\1b$\n*.bak\n^(a)?(?:|){60}\\1b|c$\n");
    qrv::IgnoreRules rules = project.rules();
    EXPECT_EQ(rules.match(OdString(std::wstring(200, L'a'))), nullptr);
    EXPECT_EQ(project.messages.size(), 2U);
    EXPECT_EQ(rules.match(OdString(std::wstring(200, L'a'))), nullptr);
    EXPECT_EQ(project.messages.size(), 2U);
    EXPECT_EQ(rules.match(L"x.bak")->line, 2);
}

TEST(IgnoreRules, AreNotAddedWhenTheyWouldBeLeftOut) {
    const Project project("*.bak\n");
    const Expected<int> added = qrv::addIgnoreRule(L"^(a{300}){300}", project.root());
    ASSERT_FALSE(added);
    EXPECT_EQ(added.error().message.toNarrow(),
              "'^(a{300}){300}' is no rule: it would take too much time or memory");
    EXPECT_FALSE(qrv::addIgnoreRule(L"^[", project.root()));
    EXPECT_EQ(qrv::addIgnoreRule(L"^a{3}$", project.root()).value(), 2);
}

TEST(IgnoreRules, TakeBackReferences) {
    Project project("^(.)(.)\\2\\1$\n");
    qrv::IgnoreRules rules = project.rules();
    EXPECT_EQ(rules.match(L"abba")->line, 1);
    EXPECT_EQ(rules.match(L"abab"), nullptr);
    EXPECT_EQ(project.messages, std::vector<std::string>());
}

TEST(IgnoreRules, KeepOrdinaryRulesForAnyNumberOfNames) {
    Project project(
        "^.*[-_]old[0-9]*[.].*$\n^(Thumbs[.]db|desktop[.]ini|plot[.]log|.*[.]err)$\n[~._]*[0-9]x\n"
        "^.*[0-9]{4}-[0-9]{2}-[0-9]{2}.*backup.*$\n");
    qrv::IgnoreRules rules = project.rules();
    for (int number = 0; number < 3000; ++number) {
        const OdString name = L"ground floor, second version, of the house at the lake " +
                              OdString(std::to_wstring(number)) + L"-2024-05-06.dxf";
        EXPECT_EQ(rules.match(name), nullptr);
    }
    EXPECT_EQ(project.messages, std::vector<std::string>());
}

}  // namespace
