#include <cli/maintenance/IgnoreRules.h>
#include <common/worktree/CollectFiles.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

namespace {

using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

/// A repository with these rules.
struct Project {
    explicit Project(const std::string& rules) {
        writeFile(folder / ".qrv/properties/ignore", rules);
    }

    std::vector<qrv_cli::IgnoreRule> rules() const {
        return qrv_cli::ignoreRules(root(), [](const OdString&) {});
    }
    common::RootPath root() const { return common::RootPath::get(folder.text(), true).value(); }

    const TemporaryFolder folder;
};

std::string linesOf(const std::vector<qrv_cli::IgnoreRule>& rules) {
    std::string lines;
    for (const qrv_cli::IgnoreRule& rule : rules)
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
    const Project project("*.bak\n^old$\nout?\n[ab].txt\n\xc3\xa4*\nq.*\n^.*[0-9]$\n");
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
    const std::vector<qrv_cli::IgnoreRule> rules = project.rules();
    int ignored = 0;
    for (const std::string& path : all) {
        const bool isIgnored =
            qrv_cli::reasonToIgnore(OdString::fromNarrow(path), rules).has_value();
        EXPECT_EQ(isIgnored, !scanned.contains(path)) << path;
        ignored += isIgnored ? 1 : 0;
    }
    EXPECT_GT(ignored, 20);
    EXPECT_LT(ignored, static_cast<int>(all.size()) - 10);
}

}  // namespace
