#include <engine/operations/Unstage.h>
#include <tests/engine/operations/TwoSides.h>

namespace {

using qrv::unstage;
using qrv_test::failureOf;
using testing::HasSubstr;

class Unstage : public qrv_test::TwoSides {
protected:
    Unstage() {
        project.write({{"a.txt", "new"}, {"c.txt", "c"}});
        project.run({"add", "--all"});
    }

    Expected<std::vector<common::StagedFile>> take(const std::string& path) {
        return unstage(root(), {.paths = {(project / path).native()}}, caller);
    }
};

TEST_F(Unstage, GivesWhatWasStagedWithItsChange) {
    const auto files = take("c.txt");
    ASSERT_EQ(files->size(), 1U);
    EXPECT_EQ(files->front().path, OdString(L"c.txt"));
    EXPECT_EQ(files->front().change, common::FileChange::added);
}

TEST_F(Unstage, TakesEverythingWithoutNamingIt) {
    EXPECT_EQ(unstage(root(), {.paths = {}, .all = true}, caller)->size(), 2U);
    EXPECT_TRUE(unstage(root(), {.paths = {}, .all = true}, caller)->empty());
}

TEST_F(Unstage, LeavesTheStageAsItIsForAPathThatIsNotOnIt) {
    EXPECT_EQ(failureOf(take("b.txt")), "'b.txt' is not staged");
    EXPECT_EQ(unstage(root(), {.paths = {}, .all = true}, caller)->size(), 2U);
}

TEST_F(Unstage, FailsOutsideOfARepository) {
    const qrv_test::TemporaryFolder elsewhere;
    EXPECT_THAT(failureOf(unstage(elsewhere.path(), {}, caller)),
                HasSubstr("is not in a repository"));
}

}  // namespace
