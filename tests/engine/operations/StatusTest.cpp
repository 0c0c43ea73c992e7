#include <engine/operations/Status.h>
#include <tests/engine/operations/TwoSides.h>

namespace {

using qrv::Status;
using testing::HasSubstr;
using testing::IsEmpty;

using StatusOfATree = qrv_test::TwoSides;

TEST_F(StatusOfATree, TellsWhatIsStagedAndWhatIsNot) {
    project.write({{"a.txt", "edited"}, {"c.txt", "c"}});
    project.run({"add", "c.txt"});
    const Expected<Status> found = status(root(), caller);
    ASSERT_EQ(found->staged.size(), 1U);
    EXPECT_EQ(found->staged.front().path, OdString(L"c.txt"));
    ASSERT_EQ(found->unstaged.size(), 1U);
    EXPECT_EQ(found->unstaged.front().path, OdString(L"a.txt"));
    EXPECT_EQ(found->unstaged.front().change, common::FileChange::modified);
}

TEST_F(StatusOfATree, KnowsTheCommitAndTheBranch) {
    const Expected<Status> found = status(root(), caller);
    EXPECT_EQ(found->branch, OdString(L"master"));
    EXPECT_EQ(found->commit->message, OdString(L"On master"));
    EXPECT_THAT(found->unstaged, IsEmpty());
    EXPECT_TRUE(found->merging.isEmpty());
}

TEST_F(StatusOfATree, ShowsAFileThatWasRenamed) {
    std::filesystem::rename(project / "a.txt", project / "z.txt");
    EXPECT_EQ(status(root(), caller)->renames.at(L"z.txt"), OdString(L"a.txt"));
}

}  // namespace
