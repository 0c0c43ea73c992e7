#include <engine/journal/OpenTree.h>
#include <engine/worktree/KeptBaseline.h>
#include <tests/engine/base/RecordingCaller.h>
#include <tests/engine/worktree/Working.h>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
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
        project.write({{".qrv/properties/ignore", ""}});
        for (const char* const name : {"a.txt", "b.dwg", ".qrv/properties/ignore"})
            makeOlder(name);
        project.commit("First");
        look();
    }

    void makeOlder(const std::string& path) const {
        fs::last_write_time(project / path,
                            fs::file_time_type::clock::now() - std::chrono::hours(1));
    }
    std::string look() const { return project.run({"status"}); }
    std::unique_ptr<WorkingTree> open(qrv::Repository::Use use = qrv::Repository::Use::look) const {
        return std::move(*qrv::openTree(project.folder.path(), use, qrv_test::anyCaller(),
                                        WorkingTree::Scan::ahead));
    }
    std::string kept() const { return readFile(project / ".qrv/baseline"); }
    bool isKept() const { return fs::exists(project / ".qrv/baseline"); }
    /// Which files the kept one has: "path size, ..."
    std::string filesOfKept() const {
        const auto read = qrv::readBaseline(*sys::Folder::open(project.folder.path()));
        return shownFiles(*read.value()->baseline);
    }
    static std::string shownFiles(const qrv::Baseline& baseline) {
        std::string text;
        for (const qrv::KnownFile& file : baseline.files())
            text += std::string(file.path) + " " + std::to_string(file.sizeBytes) +
                    (file.isNoted() ? ", " : " unknown, ");
        return text;
    }
    /// Makes it say that there is another file, as if it were of HEAD.
    void falsify() const {
        const auto read = qrv::readBaseline(*sys::Folder::open(project.folder.path()));
        qrv::Baseline& baseline = *read.value()->baseline;
        baseline.change({{"false", qrv::KnownFile()}});
        writeFile(project / ".qrv/baseline", toBytes(read.value()->last, baseline));
    }
    /// Whether a look takes the files of HEAD from there.
    bool isUsed() const {
        const std::string before = kept();
        falsify();
        const bool isFalse = shownFiles(*open()->baseline()).find("false") != std::string::npos;
        writeFile(project / ".qrv/baseline", before);
        return isFalse;
    }

    const Working project;
};

TEST_F(KeptBaselineOfAWorkingTree, IsUsedInsteadOfTheFilesOfHead) {
    EXPECT_TRUE(isUsed());
    const auto workingTree = open();
    const auto changes = findChanges(*workingTree);
    EXPECT_TRUE(changes->isEmpty());
    EXPECT_EQ(changes->presentCount(), 3U);
    EXPECT_EQ(presentFiles(*changes),
              (std::vector<OdString>{L".qrv/properties/ignore", L"a.txt", L"b.dwg"}));
}

TEST_F(KeptBaselineOfAWorkingTree, StaysOfUseWhateverChanges) {
    const std::string before = kept();
    project.write({{"a.txt", "longer text"}, {"new", "n"}, {"old.txt", "text"}});
    fs::rename(project / "b.dwg", project / "c.dwg");
    project.run({"add", "b.dwg"});
    EXPECT_TRUE(isUsed());
    EXPECT_EQ(look(),
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
    project.commit("Second");
    EXPECT_TRUE(isUsed());
    EXPECT_EQ(look(), "Branch 'master', commit 2: Second\nNothing has changed; files: 5\n");
    project.run({"switch", "--create", "branch"});
    EXPECT_TRUE(isUsed());
    EXPECT_EQ(kept(), before);
    EXPECT_EQ(shownFiles(*open()->baseline()),
              shownFiles(*open(qrv::Repository::Use::change)
                              ->baselineOf({L".qrv/properties/ignore", L"a.txt", L"c.dwg", L"new",
                                            L"old.txt"})));
}

TEST_F(KeptBaselineOfAWorkingTree, LetsAFileBeReadWhoseStampIsAnotherAndNotesThat) {
    project.write({{"a.txt", "TEXT"}});
    makeOlder("a.txt");
    EXPECT_EQ(qrv_test::shown(*findChanges(*open())), "a.txt modified, ");
    project.write({{"a.txt", "text"}});
    makeOlder("a.txt");
    EXPECT_TRUE(findChanges(*open())->isEmpty());
    const auto workingTree = open();
    EXPECT_EQ(workingTree->repository().history().headFile(L"a.txt")->stamp,
              *workingTree->folder().stamp("a.txt"));
}

TEST_F(KeptBaselineOfAWorkingTree, IsNotUsedForAnotherHistory) {
    const std::string before = kept();
    qrv::HeadChange other =
        qrv::readBaseline(*sys::Folder::open(project.folder.path()))->value().last;
    ++other.mark;
    writeFile(project / ".qrv/baseline", toBytes(other, qrv::Baseline()));
    EXPECT_EQ(shownFiles(*open()->baseline()), ".qrv/properties/ignore 0, a.txt 4, b.dwg 7, ");
    look();
    EXPECT_EQ(kept(), before);
}

TEST_F(KeptBaselineOfAWorkingTree, IsMadeAnewWhenManyFilesHaveChangedSince) {
    for (int number = 0; number < 200; ++number)
        project.write({{"many/" + std::to_string(number), "x"}});
    const std::string before = kept();
    project.commit("Many");
    EXPECT_NE(kept(), before);
    EXPECT_NE(filesOfKept().find("many/199 1"), std::string::npos);
    EXPECT_TRUE(isUsed());
}

TEST_F(KeptBaselineOfAWorkingTree, IsKeptByACommit) {
    project.write({{"new", "n"}});
    makeOlder("new");
    project.run({"add", "new"});
    fs::remove(project / ".qrv/baseline");
    project.run({"commit", "-m", "Second"});
    EXPECT_EQ(filesOfKept(), ".qrv/properties/ignore 0, a.txt 4, b.dwg 7, new 1, ");
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

TEST_F(KeptBaselineOfAWorkingTree, IsMadeAnewWhenItIsDamaged) {
    const std::string before = kept();
    for (const std::string& damaged : {std::string(), before.substr(1), before + "x"}) {
        writeFile(project / ".qrv/baseline", damaged);
        look();
        EXPECT_EQ(kept(), before);
    }
}

TEST_F(KeptBaselineOfAWorkingTree, ThatIsFarTooLongIsNotRead) {
    const std::string before = kept();
    fs::resize_file(project / ".qrv/baseline", 1ULL << 40);
    look();
    EXPECT_EQ(kept(), before);
}

TEST_F(KeptBaselineOfAWorkingTree, OfAnotherProgramIsPassedOver) {
    for (const char* const bytes : {"qrv baseline 1\nsomething", "qrv baseline 3\nsomething"}) {
        writeFile(project / ".qrv/baseline", bytes);
        EXPECT_TRUE(*qrv::readBaseline(*sys::Folder::open(project.folder.path())) == std::nullopt);
        EXPECT_EQ(shownFiles(*open()->baseline()), ".qrv/properties/ignore 0, a.txt 4, b.dwg 7, ");
    }
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
