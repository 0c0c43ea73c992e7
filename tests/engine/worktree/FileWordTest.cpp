#include <engine/worktree/FileWord.h>
#include <tests/engine/worktree/InsideARoot.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class AWord : public qrv_test::InsideARoot {
protected:
    std::string found(const std::string& word) const {
        const auto files = qrv::filesOfWord(root, word, paths);
        return files ? shown(*files) : files.error().message.toNarrow();
    }
    std::string near(const wchar_t* word) const { return shown(qrv::nearPaths(word, paths)); }

    static std::string shown(const std::vector<OdString>& files) {
        std::string text;
        for (const OdString& file : files)
            text += file.toNarrow() + ", ";
        return text;
    }

    const std::vector<OdString> paths = {L"*.dwg",           L"list.csv",        L"plans/a.tar.gz",
                                         L"plans/floor.dwg", L"plans/old/a.dwg", L"x/floor.dwg"};
};

TEST_F(AWord, IsAPathBeforeAnythingElse) {
    EXPECT_EQ(found("../*.dwg"), "*.dwg, ");
    EXPECT_EQ(found("old"), "plans/old/a.dwg, ");
    EXPECT_EQ(found("."), "plans/a.tar.gz, plans/floor.dwg, plans/old/a.dwg, ");
    EXPECT_EQ(found("floor.dwg"), "plans/floor.dwg, ");
}

TEST_F(AWord, MeansNamesBelowTheCurrentFolderWhenItIsAGlob) {
    EXPECT_EQ(found("*.dwg"), "plans/floor.dwg, plans/old/a.dwg, ");
    EXPECT_EQ(found("./*.dwg"), "plans/floor.dwg, ");
    EXPECT_EQ(found("../*/floor.*"), "plans/floor.dwg, x/floor.dwg, ");
    EXPECT_EQ(found("../**/?.dwg"), "*.dwg, plans/old/a.dwg, ");
    EXPECT_EQ(found("o*/"), "plans/old/a.dwg, ");
    EXPECT_EQ(found("*.pdf"), "");
    EXPECT_EQ(found("../../*"), "");
}

TEST_F(AWord, IsTheEndOfOneName) {
    EXPECT_EQ(found("list"), "list.csv, ");
    EXPECT_EQ(found("ist.csv"), "list.csv, ");
    EXPECT_EQ(found("x/floor"), "x/floor.dwg, ");
    EXPECT_EQ(found("r.gz"), "plans/a.tar.gz, ");
    EXPECT_EQ(found("loor"), "Several files end in 'loor': 2\n  plans/floor.dwg\n  x/floor.dwg");
    EXPECT_EQ(found(""), "");
    EXPECT_EQ(found("l.st"), "");
}

TEST_F(AWord, IsNearToWhatHoldsItOrIsHardlyAnother) {
    EXPECT_EQ(near(L"LOO"), "plans/floor.dwg, x/floor.dwg, ");
    EXPECT_EQ(near(L"lsit.csv"), "list.csv, ");
    EXPECT_EQ(near(L"nothing like it"), "");
    EXPECT_EQ(near(L""), "");
}

}  // namespace
