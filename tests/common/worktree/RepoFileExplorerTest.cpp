#include <common/worktree/RepoFileExplorer.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <cstddef>
#include <regex>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace {

using common::File;
using common::FileChange;
using common::NotFound;
using common::RepoChanges;
using common::RepoFileExplorer;
using common::RootPath;
using common::StagedFile;
using common::StatusRef;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const std::string nothing = "There are no modified or untracked files for commit.";

RepoFileExplorer explorerOf(const RepoChanges& changes) {
    const qrv_test::TemporaryFolder folder;
    return {changes, RootPath::get(folder.text(), true).value()};
}

std::vector<File> files(const std::vector<const char*>& paths) {
    std::vector<File> result;
    for (const char* path : paths)
        result.emplace_back(OdString(path));
    return result;
}

/// Changes of two modified, one added and one removed file.
RepoChanges someChanges() {
    RepoChanges changes;
    changes.changes = {StatusRef(L"only asked whether it is empty", FileChange::added)};
    changes.modified = files({"z.dwg", "a.dwg"});
    changes.added = files({"new.txt"});
    changes.removed = files({"old.txt"});
    return changes;
}

/// "path change", for failure messages.
std::string shown(const OdString& path, FileChange change) {
    return path.toNarrow() + " " + common::toString(change).value().toNarrow();
}

std::vector<std::string> shown(const std::vector<StatusRef>& list) {
    std::vector<std::string> result;
    for (const StatusRef& file : list)
        result.push_back(shown(file.path(), file.status()) + (file.selected ? "" : " unselected"));
    return result;
}

/// What a name finds among modified files: the path, nothing, or an error.
std::string found(const char* name, const std::vector<const char*>& paths) {
    RepoChanges changes;
    changes.modified = files(paths);
    const auto result = explorerOf(changes).findForStaging(OdString(name));
    if (const auto* file = std::get_if<StagedFile>(&result))
        return file->path.toNarrow();
    if (const auto* error = std::get_if<ErrorMessage>(&result))
        return (error->code == 0 ? "error: " : "error with a code: ") + error->message.toNarrow();
    return "nothing";
}

std::string several(const std::string& name) {
    return "error: More than one file found with the name " + name + ".\n";
}

TEST(RepoFileExplorer, OffersModifiedThenAddedThenRemovedFiles) {
    EXPECT_THAT(
        shown(explorerOf(someChanges()).possibleStageFiles()),
        ElementsAre("z.dwg modified", "a.dwg modified", "new.txt added", "old.txt removed"));
    EXPECT_THAT(explorerOf(RepoChanges()).possibleStageFiles(), IsEmpty());
}

TEST(RepoFileExplorer, OffersNeitherUnchangedFilesNorTheFirstList) {
    RepoChanges changes;
    changes.changes = {StatusRef(L"a", FileChange::modified)};
    changes.unchanged = {{L"b", L"po:1"}};
    const RepoFileExplorer explorer = explorerOf(changes);
    EXPECT_THAT(explorer.possibleStageFiles(), IsEmpty());
    EXPECT_FALSE(explorer.hasFilesToStage());
}

TEST(RepoFileExplorer, StagesEachCandidateOnce) {
    RepoFileExplorer explorer = explorerOf(someChanges());
    EXPECT_TRUE(explorer.hasFilesToStage());
    EXPECT_TRUE(explorer.stage({L"a.dwg", FileChange::modified}));
    EXPECT_FALSE(explorer.stage({L"a.dwg", FileChange::modified}));
    EXPECT_TRUE(explorer.stage({L"old.txt", FileChange::removed}));
    EXPECT_TRUE(explorer.stage({L"z.dwg", FileChange::modified}));
    EXPECT_TRUE(explorer.hasFilesToStage());
    EXPECT_TRUE(explorer.stage({L"new.txt", FileChange::added}));
    EXPECT_FALSE(explorer.hasFilesToStage());
}

TEST(RepoFileExplorer, StagesNothingThatIsNoCandidate) {
    RepoFileExplorer explorer = explorerOf(someChanges());
    EXPECT_FALSE(explorer.stage({L"a.dwg", FileChange::added}));
    EXPECT_FALSE(explorer.stage({L"A.dwg", FileChange::modified}));
    EXPECT_FALSE(explorer.stage({L"a", FileChange::modified}));
    EXPECT_FALSE(explorer.stage({OdString(), FileChange::modified}));
    EXPECT_THAT(explorer.stagedFiles().value(), IsEmpty());
}

TEST(RepoFileExplorer, TellsAPathInTwoListsApartByItsChange) {
    RepoChanges changes;
    changes.added = files({"a"});
    changes.removed = files({"a"});
    RepoFileExplorer explorer = explorerOf(changes);
    EXPECT_THAT(shown(explorer.possibleStageFiles()), ElementsAre("a added", "a removed"));
    EXPECT_TRUE(explorer.stage({L"a", FileChange::removed}));
    EXPECT_TRUE(explorer.hasFilesToStage());
    EXPECT_FALSE(explorer.stage({L"a", FileChange::removed}));
    EXPECT_TRUE(explorer.stage({L"a", FileChange::added}));
    EXPECT_FALSE(explorer.hasFilesToStage());
}

// Of two equal candidates only the first can be staged, so one stays for ever.
TEST(RepoFileExplorer, CannotStageTheSecondOfEqualCandidates) {
    RepoChanges changes;
    changes.added = files({"a", "a"});
    RepoFileExplorer explorer = explorerOf(changes);
    EXPECT_TRUE(explorer.stage({L"a", FileChange::added}));
    EXPECT_FALSE(explorer.stage({L"a", FileChange::added}));
    EXPECT_TRUE(explorer.hasFilesToStage());
}

TEST(RepoFileExplorer, GivesEveryCandidateAsSelectedOnceOneIsStaged) {
    RepoFileExplorer explorer = explorerOf(someChanges());
    ASSERT_TRUE(explorer.stage({L"new.txt", FileChange::added}));
    EXPECT_THAT(
        shown(explorer.stagedFiles().value()),
        ElementsAre("z.dwg modified", "a.dwg modified", "new.txt added", "old.txt removed"));
}

TEST(RepoFileExplorer, GivesAnEmptyListWhileNothingIsStaged) {
    EXPECT_THAT(explorerOf(someChanges()).stagedFiles().value(), IsEmpty());
}

TEST(RepoFileExplorer, SaysWhenThereIsNothingToCommit) {
    RepoChanges changes = someChanges();
    changes.changes.clear();
    RepoFileExplorer explorer = explorerOf(changes);
    const auto staged = explorer.stagedFiles();
    ASSERT_FALSE(staged.hasValue());
    EXPECT_EQ(staged.error().message.toNarrow(), nothing);
    EXPECT_EQ(staged.error().code, 0);
    // It is asked only while nothing is staged.
    ASSERT_TRUE(explorer.stage({L"a.dwg", FileChange::modified}));
    EXPECT_THAT(explorer.stagedFiles().value(), SizeIs(4));
}

TEST(RepoFileExplorer, FindsTheOneCandidateWhoseEndHasTheName) {
    const struct {
        const char* name;
        std::vector<const char*> paths;
        std::string found;
    } cases[] = {
        {"x.dwg", {"x.dwg"}, "x.dwg"},
        {"x.dwg", {}, "nothing"},
        {"x.dwg", {"y.dwg", "x.dxf"}, "nothing"},
        {"x", {"a/x.dwg", "b/x.dwg"}, several("x")},
        {"plan", {"sub/plan.dwg"}, "sub/plan.dwg"},
        {"plan", {"sub/floorplan.dwg"}, "sub/floorplan.dwg"},
        {"plan.dwg", {"sub/floorplan.dwg"}, "sub/floorplan.dwg"},
        {"plan.dwg", {"sub/plan.dwg", "sub/floorplan.dwg"}, several("plan.dwg")},
        {"sub/plan", {"sub/plan.dwg", "other/plan.dwg"}, "sub/plan.dwg"},
        {"plan", {"plan"}, "nothing"},
        {"plan", {"plan.dwg.bak"}, "plan.dwg.bak"},
        {"plan", {"plan.mp3", "plan.d1"}, "nothing"},
        {"plan", {"plan."}, "nothing"},
        {"plan", {"PLAN.dwg", "plan.dwg/x"}, "nothing"},
        {"plan.dw", {"plan.dwg"}, "nothing"},
        {"", {"a/b.dwg"}, "a/b.dwg"},
        {"", {"a/b"}, "nothing"},
        {"B\xC3\xBCro", {"B\xC3\xBCro.dwg"}, "B\xC3\xBCro.dwg"},
        // A dot at either end is no extension.
        {".hidden", {".hidden"}, "nothing"},
        {".hidden", {".hidden.txt"}, ".hidden.txt"},
        {"plan.", {"plan1.dwg"}, "plan1.dwg"},
    };
    for (const auto& [name, paths, expected] : cases)
        EXPECT_EQ(found(name, paths), expected) << name;
}

TEST(RepoFileExplorer, TakesANameAsAnExpression) {
    const struct {
        const char* name;
        std::vector<const char*> paths;
        std::string found;
    } cases[] = {
        {"x.dwg", {"xdwg", "x_dwg"}, "x_dwg"},
        {"p.an", {"plan.dwg", "pean"}, "pean"},
        {"p.*n", {"planken.dwg"}, "nothing"},
        {"(a|b)", {"a.txt", "c.txt"}, "a.txt"},
        {"[ab]", {"a.txt", "b.txt"}, several("[ab]")},
        {"a\\.b", {"a.b", "axb"}, "a.b"},
        {"a$.b", {"a.b"}, "nothing"},
        {"%ls", {"%ls.a", "x%ls.a"}, several("%ls")},
        // The alternatives split the whole expression.
        {"a|b.c", {"x/a", "b.c"}, several("a|b.c")},
    };
    for (const auto& [name, paths, expected] : cases)
        EXPECT_EQ(found(name, paths), expected) << name;
}

TEST(RepoFileExplorer, LetsTheExceptionOfANameThatIsNoExpressionPass) {
    const RepoFileExplorer explorer = explorerOf(someChanges());
    for (const char* name : {"(", "[", "a{2", "\\", "(.dwg"}) {
        EXPECT_THROW(static_cast<void>(explorer.findForStaging(OdString(name))), std::regex_error)
            << name;
        EXPECT_THROW(static_cast<void>(explorer.findUnchanged(OdString(name))), std::regex_error)
            << name;
    }
}

// Symptom: a name over 2,000 units was refused whatever it held. Cause: the guard against a
// compiler that recurses began long before its stack ended.
TEST(RepoFileExplorer, RefusesANameOnlyWhereTheStackWouldEnd) {
    const RepoFileExplorer explorer = explorerOf(someChanges());
    const auto complaint = [&](std::size_t length) {
        try {
            static_cast<void>(explorer.findUnchanged(OdString(std::wstring(length, L'('))));
        } catch (const std::regex_error& error) {
            return error.code();
        }
        return std::regex_constants::error_type();
    };
    EXPECT_EQ(complaint(2'001), std::regex_constants::error_paren);
    EXPECT_EQ(complaint(1'000'000), std::regex_constants::error_complexity);
}

TEST(RepoFileExplorer, FindsALongCandidateByItsOwnPath) {
    const std::string path = std::string(2'104, 'a') + ".dwg";
    EXPECT_EQ(found(path.c_str(), {path.c_str()}), path);
    EXPECT_EQ(found(path.substr(0, 2'104).c_str(), {path.c_str()}), path);
}

TEST(RepoFileExplorer, FindsAPathAsLongAsTheSystemAllows) {
    const std::string path = std::string(4'090, 'a') + "b.dwg";
    EXPECT_EQ(found("b", {path.c_str()}), path);
}

TEST(RepoFileExplorer, FindsAStagedCandidateAgainWithItsChange) {
    RepoFileExplorer explorer = explorerOf(someChanges());
    ASSERT_TRUE(explorer.stage({L"old.txt", FileChange::removed}));
    const auto result = explorer.findForStaging(L"old");
    ASSERT_TRUE(std::holds_alternative<StagedFile>(result));
    EXPECT_EQ(std::get<StagedFile>(result), StagedFile(L"old.txt", FileChange::removed));
}

TEST(RepoFileExplorer, FindsAPathInTwoListsTwice) {
    RepoChanges changes;
    changes.added = files({"a.b"});
    changes.removed = files({"a.b"});
    const auto result = explorerOf(changes).findForStaging(L"a");
    ASSERT_TRUE(std::holds_alternative<ErrorMessage>(result));
    EXPECT_EQ(std::get<ErrorMessage>(result).message.toNarrow(),
              "More than one file found with the name a.\n");
}

TEST(RepoFileExplorer, AnswersInTheOrderOfTheAlternatives) {
    using Answer = decltype(std::declval<RepoFileExplorer>().findForStaging(OdString()));
    EXPECT_TRUE((std::is_same_v<Answer, std::variant<StagedFile, NotFound, ErrorMessage>>));
    EXPECT_TRUE(std::is_empty_v<NotFound>);
}

TEST(RepoFileExplorer, FindsTheFirstUnchangedFile) {
    RepoChanges changes = someChanges();
    changes.unchanged = {
        {L"doc/readme", L"po:0"}, {L"doc/readme.txt", L"po:1"}, {L"readme.md", L"po:2"}};
    const RepoFileExplorer explorer = explorerOf(changes);
    EXPECT_EQ(explorer.findUnchanged(L"readme"), L"doc/readme.txt");
    EXPECT_EQ(explorer.findUnchanged(L"readme.md"), L"readme.md");
    EXPECT_EQ(explorer.findUnchanged(L"po:2"), L"");
    EXPECT_EQ(explorer.findUnchanged(L"new"), L"");
    EXPECT_EQ(explorerOf(RepoChanges()).findUnchanged(L"readme"), L"");
}

TEST(RepoFileExplorer, CopiesTheChanges) {
    RepoChanges changes = someChanges();
    RepoFileExplorer explorer = explorerOf(changes);
    changes = RepoChanges();
    EXPECT_THAT(explorer.possibleStageFiles(), SizeIs(4));
}

TEST(RepoFileExplorer, IsMovedAndNotCopied) {
    EXPECT_FALSE(std::is_copy_constructible_v<RepoFileExplorer>);
    RepoFileExplorer explorer = explorerOf(someChanges());
    ASSERT_TRUE(explorer.stage({L"a.dwg", FileChange::modified}));
    RepoFileExplorer moved = std::move(explorer);
    EXPECT_FALSE(moved.stage({L"a.dwg", FileChange::modified}));
    RepoFileExplorer assigned = explorerOf(RepoChanges());
    assigned = std::move(moved);
    EXPECT_THAT(assigned.stagedFiles().value(), SizeIs(4));
}

}  // namespace
