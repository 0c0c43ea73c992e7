#include <engine/operations/Add.h>
#include <tests/engine/worktree/Working.h>

#include <gmock/gmock.h>

#include <string>

namespace {

using qrv::Added;
using testing::HasSubstr;
using testing::IsEmpty;

/// A repository without a commit, and with the files of a new project.
class Add : public testing::Test {
protected:
    Expected<Added> add(const qrv::AddRequest& request) {
        return qrv::add(project.folder.path(), request, caller);
    }
    /// "path change, ..."
    static std::string shown(const std::vector<common::StagedFile>& files) {
        std::string text;
        for (const common::StagedFile& file : files)
            text += file.path.toNarrow() + " " + common::toString(file.change)->toNarrow() + ", ";
        return text;
    }

    qrv_test::Working project;
    qrv_test::RecordingCaller caller;
};

TEST_F(Add, StagesTheFilesThatAWordStandsFor) {
    project.write({{"plans/a.txt", "a"}, {"plans/b.txt", "b"}, {"c.txt", "c"}});
    const Expected<Added> added = add({.paths = {(project / "plans").string()}});
    ASSERT_TRUE(added);
    EXPECT_EQ(shown(added->staged), "plans/a.txt added, plans/b.txt added, ");
    EXPECT_EQ(added->stagedBytes, 2);
    EXPECT_EQ(shown(add({.paths = {}, .all = true})->staged),
              ".qrv/properties/ignore added, c.txt added, plans/a.txt added, plans/b.txt added, ");
    EXPECT_THAT(caller.notes, IsEmpty());
}

TEST_F(Add, FindsWhatAPersonShouldKnow) {
    project.write({{"roof.dwg", "1234"},
                   {"roof.dwl", ""},
                   {"sub/Plan.txt", "p"},
                   {"sub/plan.txt", "p"},
                   {"sub/con.txt", "c"}});
    const Expected<Added> added = add({.paths = {}, .all = true, .largeFileBytes = 3});
    ASSERT_TRUE(added);
    ASSERT_EQ(added->open.size(), 1U);
    EXPECT_EQ(added->open[0].path, OdString(L"roof.dwg"));
    EXPECT_EQ(added->open[0].lockPath, OdString(L"roof.dwl"));
    ASSERT_EQ(added->oddNames.size(), 2U);
    EXPECT_EQ(added->oddNames[0].path, OdString(L"sub/Plan.txt"));
    EXPECT_EQ(added->oddNames[0].other, OdString(L"sub/plan.txt"));
    EXPECT_EQ(added->oddNames[1].path, OdString(L"sub/con.txt"));
    EXPECT_EQ(added->oddNames[1].other, OdString());
    ASSERT_FALSE(added->large.empty());
    EXPECT_EQ(added->large.back().path, OdString(L"roof.dwg"));
    EXPECT_EQ(added->large.back().sizeBytes, 4);
}

TEST_F(Add, StagesNothingForAWordThatStandsForNothing) {
    project.write({{"plan.txt", "a"}});
    const Expected<Added> added =
        add({.paths = {(project / "plan.txt").string(), (project / "roof").string()}});
    ASSERT_FALSE(added);
    EXPECT_THAT(added.error().message.toNarrow(), HasSubstr("There is no changed file '"));
    EXPECT_THAT(project.run({"status"}), testing::Not(HasSubstr("Staged")));
}

}  // namespace
