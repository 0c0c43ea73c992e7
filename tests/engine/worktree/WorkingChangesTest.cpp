#include <common/state/Index.h>
#include <engine/journal/OpenTree.h>
#include <tests/engine/base/RecordingCaller.h>
#include <tests/engine/worktree/Working.h>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>

namespace {

namespace fs = std::filesystem;
using common::FileChange;
using qrv::findChanges;
using qrv::unchangedFiles;
using qrv::WorkingChanges;
using qrv::WorkingTree;
using qrv_test::shown;
using qrv_test::Working;

class AWorkingTree : public testing::Test {
protected:
    AWorkingTree() {
        project.write(
            {{"b.dwg", "drawing"}, {"a.txt", "text"}, {"sub/c.txt", "more"}, {"empty", ""}});
        project.commit("First");
    }

    WorkingChanges changes() const { return *findChanges(*project.open()); }
    std::string renames() const {
        std::string text;
        for (const auto& [path, previous] : changes().renames)
            text += previous.toNarrow() + ">" + path.toNarrow() + ", ";
        return text;
    }

    const Working project;
};

TEST_F(AWorkingTree, HasNoChangesAfterACommit) {
    const WorkingChanges found = changes();
    EXPECT_TRUE(found.isEmpty());
    EXPECT_EQ(presentFiles(found), (std::vector<OdString>{L".qrv/properties/ignore", L"a.txt",
                                                          L"b.dwg", L"empty", L"sub/c.txt"}));
    EXPECT_EQ(found.presentCount(), 5U);
}

TEST_F(AWorkingTree, ListsWhatIsPresentInOrder) {
    project.write({{"sub/d.txt", "new"}, {"Z.txt", "new, too"}, {"sub/c.bak", "ignored"}});
    fs::remove(project / "a.txt");
    const WorkingChanges found = changes();
    EXPECT_EQ(presentFiles(found),
              (std::vector<OdString>{L".qrv/properties/ignore", L"Z.txt", L"b.dwg", L"empty",
                                     L"sub/c.txt", L"sub/d.txt"}));
    EXPECT_EQ(found.presentCount(), 6U);
}

TEST_F(AWorkingTree, ListsTheUnchangedFilesWhenAsked) {
    project.write({{"b.dwg", "DRAWING"}, {"sub/d.txt", "new"}});
    fs::remove(project / "empty");
    const auto workingTree = project.open();
    const WorkingChanges found = *findChanges(*workingTree);
    std::string shown;
    for (const common::UnchangedFile& file : unchangedFiles(found, *workingTree)) {
        shown += file.path.toNarrow() + ", ";
        EXPECT_EQ(file.url, urlIn(workingTree->repository().headFiles(), file.path));
    }
    EXPECT_EQ(shown, ".qrv/properties/ignore, a.txt, sub/c.txt, ");
}

TEST_F(AWorkingTree, ListsEachChangeInTheOrderOfThePaths) {
    project.write({{"b.dwg", "DRAWING"}, {"sub/d.txt", "new"}, {"Z.txt", "new, too"}});
    fs::remove(project / "a.txt");
    const WorkingChanges found = changes();
    EXPECT_EQ(shown(found), "Z.txt added, a.txt removed, b.dwg modified, sub/d.txt added, ");
    EXPECT_EQ(changeOf(L"a.txt", found), FileChange::removed);
    EXPECT_EQ(changeOf(L"b.dwg", found), FileChange::modified);
    EXPECT_EQ(changeOf(L"sub/d.txt", found), FileChange::added);
    EXPECT_EQ(changeOf(L"sub/c.txt", found), FileChange::unchanged);
    EXPECT_EQ(changeOf(L"nowhere", found), FileChange::unchanged);
}

TEST_F(AWorkingTree, FindsARenamingByTheContents) {
    fs::rename(project / "b.dwg", project / "sub/B.dwg");
    EXPECT_EQ(renames(), "b.dwg>sub/B.dwg, ");
    project.write({{"sub/B.dwg", "DRAWING"}});
    EXPECT_EQ(renames(), "");
}

TEST_F(AWorkingTree, TakesNoCopyForARenaming) {
    fs::copy(project / "b.dwg", project / "copy.dwg");
    EXPECT_EQ(renames(), "");
}

TEST_F(AWorkingTree, TakesNoEmptyFileForARenamedOne) {
    fs::rename(project / "empty", project / "void");
    EXPECT_EQ(renames(), "");
}

TEST_F(AWorkingTree, GivesEachLostFileOneNewName) {
    project.write({{"twin 1.txt", "twin"}, {"twin 2.txt", "twin"}});
    project.commit("Twins");
    fs::rename(project / "twin 2.txt", project / "x.txt");
    fs::rename(project / "twin 1.txt", project / "y.txt");
    fs::copy(project / "y.txt", project / "z.txt");
    EXPECT_EQ(renames(), "twin 1.txt>x.txt, twin 2.txt>y.txt, ");
}

TEST_F(AWorkingTree, ListsLinksApart) {
    fs::remove(project / "a.txt");
    fs::create_symlink("sub/c.txt", project / "a.txt");
    const WorkingChanges found = changes();
    EXPECT_EQ(shown(found), "a.txt removed, ");
    EXPECT_EQ(found.links, (std::vector<OdString>{L"a.txt"}));
}

TEST_F(AWorkingTree, DoesNotLookThroughALinkInPlaceOfAFolder) {
    fs::rename(project / "sub", project.folder.path().string() + "-moved");
    fs::create_directory_symlink(project.folder.path().string() + "-moved", project / "sub");
    EXPECT_EQ(shown(changes()), "sub/c.txt removed, ");
    fs::remove_all(project.folder.path().string() + "-moved");
}

// What a look reads is noted only once a later change would give the file another time.
TEST_F(AWorkingTree, RemembersWhatItReadWhenThatIsOldEnough) {
    const auto isNoted = [this] {
        const auto workingTree = project.open();
        EXPECT_TRUE(findChanges(*workingTree)->isEmpty());
        return workingTree->repository().history().headFile(L"a.txt")->stamp.has_value();
    };
    EXPECT_FALSE(isNoted());
    fs::last_write_time(project / "a.txt",
                        fs::file_time_type::clock::now() - std::chrono::seconds(1));
    EXPECT_FALSE(isNoted());
    fs::last_write_time(project / "a.txt",
                        fs::file_time_type::clock::now() - std::chrono::seconds(3));
    EXPECT_TRUE(isNoted());
}

TEST_F(AWorkingTree, TakesOverWhatAnIndexKnowsAndEmptiesIt) {
    const auto longAgo = fs::file_time_type::clock::now() - std::chrono::hours(24);
    for (const char* const path : {"a.txt", "b.dwg", "sub/c.txt"})
        fs::last_write_time(project / path, longAgo);
    {
        const auto workingTree = project.open();
        common::Cache& cache = workingTree->repository().cache();
        common::updateIndex(L"a.txt", cache, workingTree->root(), false);
        common::updateIndex(L"b.dwg", cache, workingTree->root(), true);
        common::updateIndex(L"sub/c.txt", cache, workingTree->root(), false);
    }
    // Then it is not what the index knows.
    fs::last_write_time(project / "sub/c.txt", longAgo + std::chrono::hours(1));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    fs::last_write_time(project / ".qrv/qrv.state", fs::file_time_type::clock::now());
    const auto workingTree = project.open();
    EXPECT_TRUE(workingTree->repository().state().index.empty());
    qrv::History& history = workingTree->repository().history();
    EXPECT_EQ(history.headFile(L"a.txt")->stamp, *workingTree->folder().stamp("a.txt"));
    EXPECT_EQ(history.headFile(L"b.dwg")->stamp, std::nullopt);
    EXPECT_EQ(history.headFile(L"sub/c.txt")->stamp, std::nullopt);
}

TEST_F(AWorkingTree, IsReadAgainWhereItWasModified) {
    const fs::file_time_type longAgo = fs::file_time_type::clock::now() - std::chrono::hours(24);
    project.write({{"a.txt", "TEXT"}});
    fs::last_write_time(project / "a.txt", longAgo);
    EXPECT_EQ(shown(changes()), "a.txt modified, ");
    EXPECT_EQ(shown(changes()), "a.txt modified, ");
    // As if a commit had kept it, and not come to write the state.
    project.write({{"a.txt", "text"}});
    fs::last_write_time(project / "a.txt", longAgo);
    EXPECT_EQ(shown(changes()), "");
}

TEST_F(AWorkingTree, RemembersWhatItReadOnlyWithTheLock) {
    fs::last_write_time(project / "a.txt",
                        fs::file_time_type::clock::now() - std::chrono::hours(1));
    const std::unique_ptr<WorkingTree> holder = project.open();
    const auto before = holder->repository().history().lastHeadChange();
    {
        const auto looker = *qrv::openTree(project.folder.path(), qrv::Repository::Use::look,
                                           qrv_test::anyCaller());
        EXPECT_FALSE(looker->repository().mayChange());
        EXPECT_TRUE(findChanges(*looker)->isEmpty());
    }
    EXPECT_EQ(holder->repository().history().lastHeadChange(), before);
}

}  // namespace
