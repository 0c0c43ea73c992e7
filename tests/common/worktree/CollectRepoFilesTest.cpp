#include <common/worktree/CollectFiles.h>
#include <common/worktree/RepoIgnore.h>
#include <common/worktree/VisitRepoFiles.h>
#include <platform/ut/ScopedFault.h>
#include <tests/common/worktree/TemporaryRepository.h>

#include <gmock/gmock.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

using qrv_test::narrow;
using testing::ElementsAre;
using testing::IsEmpty;

void pass(const OdString& /*path*/) {
}

class CollectRepoFiles : public testing::Test {
protected:
    void addFiles(const std::vector<std::string>& names) const {
        for (const std::string& name : names)
            qrv_test::writeFile(repository.folder / name, "");
    }

    std::vector<std::string> collect() {
        messages.clear();
        const auto onError = [this](const OdString& text) { messages.push_back(text.toNarrow()); };
        const auto files = common::collectRepoFiles(onError, repository.root).value();
        std::vector<std::string> paths;
        for (const common::File& file : files)
            paths.push_back(file.path.toNarrow());
        return paths;
    }

    qrv_test::TemporaryRepository repository;
    std::vector<std::string> messages;
};

}  // namespace

TEST_F(CollectRepoFiles, ListsTheWorkingFilesAndThenTheProperties) {
    addFiles({"z.dwg", "a/plan.dwg", ".qrv/qrv.state", ".qrv/objects/x",
              ".qrv/properties/project_name", ".qrv/properties/sub/p"});
    EXPECT_THAT(collect(), ElementsAre("z.dwg", "a/plan.dwg", ".qrv/properties/ignore",
                                       ".qrv/properties/project_name", ".qrv/properties/sub/p"));
    EXPECT_THAT(messages, IsEmpty());
}

TEST_F(CollectRepoFiles, MakesTheIgnoreFileAndUsesItsRules) {
    addFiles({"a.BAK", "b.dwl", "c.Dwl2", "d.dwl3", "sub/e.bak", "sub/f.dwg", "x.bak/g"});
    EXPECT_THAT(collect(), ElementsAre("d.dwl3", "sub/f.dwg", ".qrv/properties/ignore"));
    EXPECT_TRUE(fs::exists(repository.folder / ".qrv/properties/ignore"));
}

TEST_F(CollectRepoFiles, LeavesOutMetadataFoldersAnywhereInTheirOwnLetterCase) {
    addFiles({"sub/.qrv/f", "sub/.QRV/g", "sub/.qrvx/h", "other/.qrv"});
    EXPECT_THAT(collect(), ElementsAre("sub/.QRV/g", "sub/.qrvx/h", ".qrv/properties/ignore"));
}

TEST_F(CollectRepoFiles, LeavesOutAFolderWithItsWholeSubtree) {
    addFiles({"Build/a/b", "src/build/c", "src/rebuild/d", "src/f"});
    repository.writeRules("build\n");
    EXPECT_THAT(collect(), ElementsAre("src/f", "src/rebuild/d", ".qrv/properties/ignore"));
}

TEST_F(CollectRepoFiles, NeverMatchesARuleWithASeparator) {
    addFiles({"a/b"});
    repository.writeRules("a/b\n*/b\n^a/b$\n");
    EXPECT_THAT(collect(), ElementsAre("a/b", ".qrv/properties/ignore"));
}

TEST_F(CollectRepoFiles, AppliesTheRulesToThePropertiesToo) {
    addFiles({".qrv/properties/a.bak", ".qrv/properties/.qrv/f", ".qrv/properties/name"});
    repository.writeRules("*.bak\nignore\n");
    EXPECT_THAT(collect(), ElementsAre(".qrv/properties/name"));
}

TEST_F(CollectRepoFiles, MixesGlobsBracketsAndExpressions) {
    addFiles({"a-1.txt", "a1.txt", "Tmp", "tmp", "keep", "x~", "caf\xC3\xA9"});
    repository.writeRules("*[-+]*.txt\n^tmp\n*~\ncaf??\n");
    EXPECT_THAT(collect(), ElementsAre("Tmp", "a1.txt", "keep", ".qrv/properties/ignore"));
}

TEST_F(CollectRepoFiles, MatchesNoNameWithALineBreakByAStar) {
    addFiles({"a\n.bak", "a\r.bak", "a.bak"});
    EXPECT_THAT(collect(), ElementsAre("a\n.bak", "a\r.bak", ".qrv/properties/ignore"));
}

TEST_F(CollectRepoFiles, GoesOnWithTheValidRulesAfterTellingTheWrongOnes) {
    addFiles({"a.bak", "b.dwg", "c.tmp"});
    repository.writeRules("*.bak\n^[\n*.tmp\n");
    EXPECT_THAT(collect(), ElementsAre("b.dwg", ".qrv/properties/ignore"));
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(messages[0], "An error occurred while parsing the ignored file:");
    EXPECT_EQ(messages[1].substr(0, 8), "Line 2: ");
}

TEST_F(CollectRepoFiles, GivesThemOneByOneAsWell) {
    addFiles({"b.dwg", "a.bak", "plans/c.dwg", "plans/deep/d.dwg", "a.dwg"});
    repository.writeRules("*.bak\n^[\n");
    std::vector<std::string> told;
    std::vector<std::string> visited;
    ASSERT_TRUE(common::visitRepoFiles(
        [&told](const OdString& text) { told.push_back(text.toNarrow()); }, repository.root,
        [&visited](const OdString& path) { visited.push_back(path.toNarrow()); }, pass));
    EXPECT_THAT(visited, ElementsAre("a.dwg", "b.dwg", "plans/c.dwg", "plans/deep/d.dwg",
                                     ".qrv/properties/ignore"));
    EXPECT_EQ(visited, collect());
    EXPECT_EQ(told, messages);
}

TEST_F(CollectRepoFiles, TellsItsVisitorWhatCouldNotBeListed) {
    addFiles({"a.dwg", "plans/b.dwg", "plans/deep/c.dwg", "z/d.dwg"});
    repository.writeRules("*.bak\n");
    std::set<std::string> unread;
    // Each call of the walk fails once: its first ones read the rules, the last ones the
    // properties.
    for (int nth = 1;; ++nth) {
        std::vector<std::string> visited;
        std::vector<std::string> unreadNow;
        const ut::ScopedFault fault(nth, EIO);
        ASSERT_TRUE(common::visitRepoFiles(
            nullptr, repository.root,
            [&visited](const OdString& path) { visited.push_back(path.toNarrow()); },
            [&unreadNow](const OdString& path) { unreadNow.push_back(path.toNarrow()); }));
        if (!fault.hasFired())
            break;
        // Nothing is missing without a word.
        EXPECT_TRUE(!unreadNow.empty() || visited.size() == 5U) << nth;
        unread.insert(unreadNow.begin(), unreadNow.end());
    }
    EXPECT_THAT(unread, ElementsAre("", ".qrv/properties", ".qrv/properties/ignore", "plans",
                                    "plans/deep", "z"));
}

TEST_F(CollectRepoFiles, EndsWithWhatItsVisitorThrows) {
    addFiles({"a.dwg", "b.dwg", "c.dwg"});
    int visited = 0;
    const auto visit = [&visited](const OdString&) {
        if (++visited == 2)
            throw std::runtime_error("enough");
    };
    EXPECT_THROW(static_cast<void>(common::visitRepoFiles(nullptr, repository.root, visit, pass)),
                 std::runtime_error);
    EXPECT_EQ(visited, 2);
}

TEST_F(CollectRepoFiles, LetsAMissingCallbackForAWrongRuleShow) {
    repository.writeRules("^[\n");
    EXPECT_THROW(static_cast<void>(common::collectRepoFiles(nullptr, repository.root)),
                 std::bad_function_call);
}

TEST_F(CollectRepoFiles, AnswersAsTheRulesAsExpressionsDo) {
    repository.writeRules("*.bak\n?a*\n[x-z]*\n^q.*$\nB.D\n");
    addFiles({"a.bak", "ba", "bab", "y", "Q", "q1", "b.d/f", "k/b.d", "k/w\n.bak", "k/m", ".qrvx"});
    std::vector<std::regex> rules = common::RepoIgnore(nullptr, repository.root).expressions();
    rules.emplace_back("^\\.qrv$");
    std::vector<std::string> expected = narrow(
        common::collectDirContents(repository.root.path(), {true, false, false, rules}).files);
    expected.emplace_back(".qrv/properties/ignore");
    EXPECT_EQ(collect(), expected);
    EXPECT_THAT(expected, ElementsAre(".qrvx", "Q", "k/m", "k/w\n.bak", ".qrv/properties/ignore"));
}

TEST_F(CollectRepoFiles, GivesTheSameListTwice) {
    for (int i = 0; i < 300; ++i)
        addFiles({"d" + std::to_string(i * 7919 % 17) + "/f" + std::to_string(i * 104729 % 1009)});
    const std::vector<std::string> first = collect();
    EXPECT_EQ(first.size(), 301U);
    EXPECT_EQ(collect(), first);
}

TEST_F(CollectRepoFiles, ListsThePropertiesOfARootThatCannotBeRead) {
    addFiles({"a", ".qrv/properties/name"});
    repository.writeRules("");
    bool sawPropertiesOnly = false;
    for (int call = 1;; ++call) {
        const ut::ScopedFault fault(call, EACCES);
        const std::vector<std::string> paths = collect();
        if (!fault.hasFired())
            break;
        sawPropertiesOnly =
            sawPropertiesOnly ||
            paths == std::vector<std::string>{".qrv/properties/ignore", ".qrv/properties/name"};
    }
    EXPECT_TRUE(sawPropertiesOnly);
}

TEST_F(CollectRepoFiles, IsEmptyWhenTheRootIsGone) {
    fs::remove_all(repository.folder.path());
    EXPECT_THAT(collect(), IsEmpty());
    fs::create_directory(repository.folder.path());
}

TEST_F(CollectRepoFiles, NeedsNoTimeForHostileGlobs) {
    addFiles({std::string(120, 'a')});
    repository.writeRules("*a*a*a*a*a*b\n");
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(collect().size(), 2U);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
}
