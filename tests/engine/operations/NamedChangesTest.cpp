#include <engine/operations/NamedChangesInternal.h>
#include <engine/worktree/FileWord.h>
#include <engine/worktree/Staging.h>
#include <tests/engine/worktree/Working.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv::findNamedChanges;
using qrv::WorkingChanges;

class NamedChanges : public testing::Test {
protected:
    NamedChanges() {
        project.write({{"a.txt", "first"}, {"b.txt", "other"}, {"sub/c.txt", "deep down"}});
        project.commit("First");
    }
    std::string wordOf(const std::string& path) const { return (project / path).string(); }
    /// "whole" when the whole tree has to be looked at.
    std::string named(const std::vector<std::string>& paths) const {
        std::vector<std::string> words;
        for (const std::string& path : paths)
            words.push_back(wordOf(path));
        const auto workingTree = project.open();
        const std::optional<WorkingChanges> changes = findNamedChanges(words, *workingTree);
        return changes ? qrv_test::shown(*changes) : "whole";
    }

    const qrv_test::Working project;
};

TEST_F(NamedChanges, AreThoseOfTheNamedFilesAlone) {
    project.write({{"a.txt", "FIRST"}, {"b.txt", "OTHER"}, {"sub/d.txt", "new"}});
    fs::remove(project / "sub/c.txt");
    EXPECT_EQ(named({"a.txt"}), "a.txt modified, ");
    EXPECT_EQ(named({"sub/d.txt", "a.txt"}), "a.txt modified, sub/d.txt added, ");
}

TEST_F(NamedChanges, NeedTheWholeTreeForWordsThatMayMeanMoreThanAFile) {
    project.write({{"a.txt", "FIRST"}, {"sub/a.txt", "new"}, {"sub/left.bak", "by a rule"}});
    fs::remove(project / "b.txt");
    for (const char* const word : {"sub", "b.txt", "sub/c.txt", "sub/left.bak", "*.txt", ".", ""})
        EXPECT_EQ(named({word}), "whole") << word;
    EXPECT_EQ(named({"a.txt", "sub"}), "whole");
    EXPECT_EQ(named({}), "whole");
}

TEST_F(NamedChanges, NeedTheWholeTreeForAFileThatMayHaveHadAnotherName) {
    fs::rename(project / "a.txt", project / "z.txt");
    EXPECT_EQ(named({"z.txt"}), "whole");
    project.write({{"longer.txt", "no such size"}});
    EXPECT_EQ(named({"longer.txt"}), "longer.txt added, ");
}

TEST_F(NamedChanges, NeedTheWholeTreeForANameThatIsLikeAnother) {
    project.write({{"SUB/d.txt", "new"}, {"sub/C.txt", "new, too"}, {"sub/e.txt", "e"}});
    for (const char* const word : {"SUB/d.txt", "sub/C.txt", "sub/e.txt"})
        EXPECT_EQ(named({word}), "whole") << word;
}

TEST_F(NamedChanges, NeedTheWholeTreeForAFileInPlaceOfAFolder) {
    fs::remove_all(project / "sub");
    project.write({{"sub", "a file now"}});
    EXPECT_EQ(named({"sub"}), "whole");
}

/// Contents of few sizes, so that files are often equal to others.
std::string anyContents(std::mt19937& random) {
    return std::string(1 + random() % 3, static_cast<char>('a' + random() % 3));
}

/// Makes, replaces and removes some of the files, of which some need a folder where another lies.
void changeSome(const std::vector<std::string>& paths, const qrv_test::Working& project,
                std::mt19937& random) {
    for (const std::string& path : paths) {
        const auto choice = random() % 4;
        std::error_code error;
        if (choice < 2)
            fs::remove_all(project / path, error);
        if (choice != 1)
            continue;
        fs::create_directories((project / path).parent_path(), error);
        if (!error)
            project.write({{path, anyContents(random)}});
    }
}

TEST_F(NamedChanges, AgreeWithTheWholeTree) {
    const std::vector<std::string> paths = {"a.txt", "A.txt", "b.txt",     "s/a.txt", "s/t/b.txt",
                                            "s/u",   "s/u/v", "t/x.bak",   "t/y.txt", "t/Y.TXT",
                                            "z",     "z/z",   "z/z/z.txt", "w.txt",   "tt.txt"};
    std::mt19937 random(12);
    int answers = 0;
    for (int round = 0; round < 60; ++round) {
        changeSome(paths, project, random);
        if (round % 8 == 0)
            project.commit("Next");
        const auto workingTree = project.open();
        const WorkingChanges whole = *findChanges(*workingTree);
        std::vector<OdString> changed;
        for (const common::StatusRef& change : whole.files.changes)
            changed.push_back(change.path());
        for (const std::string& path : paths) {
            const auto part = findNamedChanges({wordOf(path)}, *workingTree);
            if (!part)
                continue;
            ++answers;
            const OdString name(path.c_str());
            ASSERT_EQ(*qrv::filesOfWord(workingTree->root(), wordOf(path), changed),
                      std::vector<OdString>{name});
            const std::vector<common::StagedFile> files = {{name, changeOf(name, whole)}};
            ASSERT_EQ(withRenameHalves(files, *part), withRenameHalves(files, whole)) << path;
            ASSERT_EQ(changeOf(name, *part), changeOf(name, whole)) << path;
        }
    }
    EXPECT_GT(answers, 50);
}

}  // namespace
