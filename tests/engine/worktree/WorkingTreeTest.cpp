#include <engine/journal/OpenTree.h>
#include <engine/worktree/KeptBaseline.h>
#include <platform/kernel/OdError.h>
#include <tests/engine/base/RecordingCaller.h>
#include <tests/engine/worktree/Working.h>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv::findChanges;
using qrv::WorkingTree;
using qrv_test::readFile;
using qrv_test::Working;
using qrv_test::writeFile;

/// A repository with a baseline that a look has kept.
class KeptBaselineOfAWorkingTree : public testing::Test {
protected:
    KeptBaselineOfAWorkingTree() {
        project.write({{"a.txt", "text"}, {"b.dwg", "drawing"}});
        for (const char* const name : {"a.txt", "b.dwg", ".qrv/properties/ignore"})
            makeOlder(name, std::chrono::hours(1));
        project.commit("First");
        look();
    }

    void makeOlder(const char* path, std::chrono::seconds by) const {
        fs::last_write_time(project / path, fs::last_write_time(project / path) - by);
    }
    /// After a moment in which the clock of the file system goes on.
    std::string look() const {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        return project.run({"status"});
    }
    std::unique_ptr<WorkingTree> open(qrv::Repository::Use use = qrv::Repository::Use::look) const {
        return std::move(*qrv::openTree(project.folder.path(), use, qrv_test::anyCaller(),
                                        WorkingTree::Scan::ahead));
    }
    bool isUsed() const { return open()->repository().stateWithoutIndex().index.empty(); }
    bool isKept() const { return fs::exists(project / ".qrv/baseline"); }

    const Working project;
};

TEST_F(KeptBaselineOfAWorkingTree, IsUsedInsteadOfTheState) {
    const auto workingTree = open();
    EXPECT_TRUE(workingTree->repository().stateWithoutIndex().index.empty());
    EXPECT_EQ(workingTree->repository().branch(), OdString(L"master"));
    const auto changes = findChanges(*workingTree);
    EXPECT_TRUE(changes->isEmpty());
    EXPECT_EQ(changes->presentCount(), 3U);
    EXPECT_EQ(presentFiles(*changes),
              (std::vector<OdString>{L".qrv/properties/ignore", L"a.txt", L"b.dwg"}));
    EXPECT_TRUE(workingTree->repository().stateWithoutIndex().index.empty());
}

TEST_F(KeptBaselineOfAWorkingTree, GivesWayToTheStateWhenThatIsAskedFor) {
    const auto workingTree = open();
    EXPECT_EQ(workingTree->repository().state().index.size(), 3U);
    EXPECT_EQ(workingTree->repository().stateWithoutIndex().index.size(), 3U);
}

TEST_F(KeptBaselineOfAWorkingTree, LeadsToAnExceptionWhenTheStateCannotBeReadAnyMore) {
    const auto workingTree = open();
    fs::remove(project / ".qrv/qrv.state");
    EXPECT_THROW(workingTree->repository().state(), OdError);
    EXPECT_EQ(workingTree->repository().branch(), OdString(L"master"));
}

TEST_F(KeptBaselineOfAWorkingTree, IsNotUsedForAChange) {
    EXPECT_EQ(open(qrv::Repository::Use::change)->repository().stateWithoutIndex().index.size(),
              3U);
}

TEST_F(KeptBaselineOfAWorkingTree, ShowsEachChangeAsTheStateDoes) {
    project.write({{"a.txt", "longer text"}, {"new", "n"}, {"old.txt", "text"}});
    fs::rename(project / "b.dwg", project / "c.dwg");
    project.run({"add", "b.dwg"});
    const std::string shown = look();
    EXPECT_TRUE(isUsed());
    EXPECT_EQ(look(), shown);
    EXPECT_EQ(shown,
              "Branch 'master', commit 1: First\n"
              "\n"
              "Staged for the next commit:\n"
              "  removed   b.dwg\n"
              "  added     c.dwg\n"
              "\n"
              "Changed, not staged (qrv add PATH):\n"
              "  modified  a.txt\n"
              "  added     new\n"
              "  added     old.txt\n"
              "\n"
              "Renamed:\n"
              "  b.dwg -> c.dwg\n");
}

TEST_F(KeptBaselineOfAWorkingTree, LetsAFileBeReadWhoseTimeIsAnotherAndNotesThat) {
    const std::string before = readFile(project / ".qrv/qrv.state");
    project.write({{"a.txt", "TEXT"}});
    makeOlder("a.txt", std::chrono::hours(2));
    EXPECT_EQ(qrv_test::shown(*findChanges(*open())), "a.txt modified, ");
    project.write({{"a.txt", "text"}});
    makeOlder("a.txt", std::chrono::hours(3));
    EXPECT_TRUE(findChanges(*open())->isEmpty());
    EXPECT_NE(readFile(project / ".qrv/qrv.state"), before);
}

TEST_F(KeptBaselineOfAWorkingTree, StaysOfUseWhileAFileIsModifiedWithoutAnotherSize) {
    project.write({{"a.txt", "TEXT"}});
    makeOlder("a.txt", std::chrono::hours(2));
    look();
    look();
    EXPECT_TRUE(isUsed());
    const std::string state = readFile(project / ".qrv/qrv.state");
    const auto written = fs::last_write_time(project / ".qrv/qrv.state");
    EXPECT_EQ(qrv_test::shown(*findChanges(*open())), "a.txt modified, ");
    EXPECT_EQ(fs::last_write_time(project / ".qrv/qrv.state"), written);
    EXPECT_EQ(readFile(project / ".qrv/qrv.state"), state);
    EXPECT_TRUE(isUsed());
}

TEST_F(KeptBaselineOfAWorkingTree, IsNotUsedForAnotherStateFile) {
    // The baseline is made younger than each of them.
    const auto isUsedWhenYounger = [this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        fs::last_write_time(project / ".qrv/baseline", fs::file_time_type::clock::now());
        return isUsed();
    };
    EXPECT_TRUE(isUsedWhenYounger());
    makeOlder(".qrv/qrv.state", std::chrono::seconds(1));
    EXPECT_FALSE(isUsedWhenYounger());
    look();
    EXPECT_TRUE(isUsed());
    // The same bytes with the same time, but another file.
    const fs::path state = project / ".qrv/qrv.state";
    fs::copy(state, project / "copy");
    fs::last_write_time(project / "copy", fs::last_write_time(state));
    fs::rename(project / "copy", state);
    EXPECT_FALSE(isUsedWhenYounger());
}

TEST_F(KeptBaselineOfAWorkingTree, IsNotUsedForAnotherCommit) {
    {
        const auto workingTree = open(qrv::Repository::Use::change);
        workingTree->repository().history().setNote(qrv::headNote, L"another");
    }
    EXPECT_FALSE(isUsed());
}

TEST_F(KeptBaselineOfAWorkingTree, IsMadeAnewAfterTheStateChanged) {
    project.write({{"new", "n"}});
    project.run({"add", "new"});
    const std::string before = readFile(project / ".qrv/baseline");
    EXPECT_FALSE(isUsed());
    look();
    EXPECT_NE(readFile(project / ".qrv/baseline"), before);
    EXPECT_TRUE(isUsed());
}

TEST_F(KeptBaselineOfAWorkingTree, IsNotUsedWhenItIsNotYoungerThanTheState) {
    const auto ofState = fs::last_write_time(project / ".qrv/qrv.state");
    fs::last_write_time(project / ".qrv/baseline", ofState + std::chrono::nanoseconds(1));
    EXPECT_TRUE(isUsed());
    fs::last_write_time(project / ".qrv/baseline", ofState);
    EXPECT_FALSE(isUsed());
    fs::last_write_time(project / ".qrv/baseline", ofState - std::chrono::seconds(1));
    EXPECT_FALSE(isUsed());
    look();
    EXPECT_TRUE(isUsed());
}

TEST_F(KeptBaselineOfAWorkingTree, IsKeptByACommit) {
    project.write({{"new", "n"}});
    makeOlder("new", std::chrono::hours(1));
    project.run({"add", "new"});
    fs::remove(project / ".qrv/baseline");
    project.run({"commit", "-m", "Second"});
    const auto kept = qrv::readBaseline(*sys::Folder::open(project.folder.path()));
    ASSERT_TRUE(kept && *kept);
    EXPECT_TRUE((*kept)->state.stagedFiles.empty());
    const std::vector<qrv::KnownFile>& files = (*kept)->baseline->files();
    ASSERT_EQ(files.size(), 4U);
    EXPECT_EQ(files.back().path, "new");
    EXPECT_NE(files.back().unmodifiedTicks, qrv::KnownFile::never);
}

TEST_F(KeptBaselineOfAWorkingTree, IsNotKeptWhenTheLookChangedTheState) {
    fs::remove(project / ".qrv/baseline");
    project.write({{"a.txt", "TEXT"}});
    makeOlder("a.txt", std::chrono::hours(2));
    look();
    EXPECT_FALSE(isKept());
}

TEST_F(KeptBaselineOfAWorkingTree, IsNotKeptWithoutTheLock) {
    fs::remove(project / ".qrv/baseline");
    const auto holder = open(qrv::Repository::Use::change);
    look();
    EXPECT_FALSE(isKept());
}

TEST_F(KeptBaselineOfAWorkingTree, IsNotKeptBeforeTheFirstCommit) {
    const Working fresh;
    fresh.run({"status"});
    EXPECT_FALSE(fs::exists(fresh / ".qrv/baseline"));
}

TEST_F(KeptBaselineOfAWorkingTree, IsNotKeptWithConflicts) {
    fs::remove(project / ".qrv/baseline");
    {
        const auto workingTree = open(qrv::Repository::Use::change);
        workingTree->repository().cache().write().conflicts.emplace_back(
            L"a.txt", OdString(), common::FileChange::modified, common::FileChange::modified);
    }
    look();
    EXPECT_FALSE(isKept());
}

TEST_F(KeptBaselineOfAWorkingTree, IsMadeAnewWhenItIsDamaged) {
    const std::string before = readFile(project / ".qrv/baseline");
    for (const std::string& damaged : {std::string(), before.substr(1), before + "x"}) {
        writeFile(project / ".qrv/baseline", damaged);
        EXPECT_FALSE(isUsed());
        look();
        EXPECT_EQ(readFile(project / ".qrv/baseline"), before);
    }
}

TEST_F(KeptBaselineOfAWorkingTree, ThatIsFarTooLongIsNotRead) {
    const std::string before = readFile(project / ".qrv/baseline");
    fs::resize_file(project / ".qrv/baseline", 1ULL << 40);
    look();
    EXPECT_EQ(readFile(project / ".qrv/baseline"), before);
}

TEST_F(KeptBaselineOfAWorkingTree, OfALaterProgramIsPassedOver) {
    writeFile(project / ".qrv/baseline", "qrv baseline 2\nsomething");
    EXPECT_FALSE(isUsed());
    EXPECT_TRUE(*qrv::readBaseline(*sys::Folder::open(project.folder.path())) == std::nullopt);
}

TEST_F(KeptBaselineOfAWorkingTree, IsNoFileOfTheProject) {
    EXPECT_EQ(project.run({"files"}), "a.txt\nb.dwg\n.qrv/properties/ignore\n");
}

TEST_F(KeptBaselineOfAWorkingTree, ThatIsAFolderOrALinkIsRefused) {
    const std::string outside = project.folder.path().string() + "-outside";
    const std::string kept = fs::canonical(project.folder.path()).string() + "/.qrv/baseline";
    fs::remove(kept);
    fs::create_directory(kept);
    EXPECT_EQ(project.qrv({"status"}).messages, "qrv: '" + kept + "' is not a regular file\n");
    fs::remove(kept);
    writeFile(outside, "outside");
    fs::create_symlink(outside, kept);
    EXPECT_EQ(project.qrv({"status"}).messages,
              "qrv: '" + kept + "' is a symbolic link, and in a repository none is followed\n");
    EXPECT_EQ(readFile(outside), "outside");
    fs::remove(outside);
}

}  // namespace
