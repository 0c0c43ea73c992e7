#include <engine/operations/Restore.h>
#include <tests/engine/operations/TwoSides.h>

#include <string>
#include <string_view>

namespace {

using qrv_test::failureOf;
using testing::ElementsAre;

class Restore : public qrv_test::TwoSides {
protected:
    qrv::RestoreRequest request(bool force = false) const {
        return {{(project / "b.txt").native()}, OdString(L"side"), false, force};
    }
};

TEST_F(Restore, BringsBackTheVersionOfACommit) {
    EXPECT_THAT(*restoreFiles(root(), request(), caller), ElementsAre(OdString(L"b.txt")));
    EXPECT_EQ(contents("b.txt"), "b of the side");
}

TEST_F(Restore, ReplacesWhatIsKeptNowhereOnlyWhenAsked) {
    project.write({{"b.txt", "in work"}});
    EXPECT_NE(failureOf(restoreFiles(root(), request(), caller)), "done");
    EXPECT_EQ(contents("b.txt"), "in work");
    EXPECT_TRUE(restoreFiles(root(), request(true), caller));
    EXPECT_EQ(contents("b.txt"), "b of the side");
}

TEST_F(Restore, WritesFilesElsewhere) {
    const qrv_test::TemporaryFolder elsewhere;
    EXPECT_THAT(*exportFiles(root(), request(), elsewhere.path(), caller),
                ElementsAre(OdString(L"b.txt")));
    EXPECT_EQ(qrv_test::readFile(elsewhere / "b.txt"), "b of the side");
    EXPECT_NE(failureOf(exportFiles(root(), request(), elsewhere.path(), caller)), "done");
}

TEST_F(Restore, OfNoPathsIsNone) {
    const qrv_test::TemporaryFolder elsewhere;
    EXPECT_TRUE(exportFiles(root(), {}, elsewhere.path(), caller)->empty());
}

}  // namespace
