#include <engine/operations/Merge.h>
#include <engine/operations/Resolve.h>
#include <tests/engine/operations/TwoSides.h>

namespace {

using qrv::Resolved;
using qrv_test::failureOf;
using testing::IsEmpty;
using Version = qrv::ResolveRequest::Version;

/// In the middle of a merge in which both sides changed b.txt.
class Resolve : public qrv_test::TwoSides {
protected:
    Resolve() {
        project.write({{"b.txt", "b of master"}});
        project.commit("B on master");
        EXPECT_EQ(merge(root(), {L"side", L"ada", std::nullopt}, caller)->conflicts.size(), 1U);
    }

    Expected<Resolved> resolve(Version version, const char* path = "b.txt") {
        return qrv::resolve(root(), {(project / path).native(), version, false}, caller);
    }
};

TEST_F(Resolve, BringsTheOtherSidesVersion) {
    const Expected<Resolved> resolved = resolve(Version::theirs);
    EXPECT_EQ(resolved->path, OdString(L"b.txt"));
    EXPECT_THAT(resolved->conflicts, IsEmpty());
    EXPECT_EQ(contents("b.txt"), "b of the side");
}

TEST_F(Resolve, KeepsOurVersion) {
    EXPECT_TRUE(resolve(Version::mine));
    EXPECT_EQ(contents("b.txt"), "b of master");
}

TEST_F(Resolve, TakesTheFileAsItLiesThere) {
    project.write({{"b.txt", "b of both"}});
    EXPECT_TRUE(resolve(Version::merged));
    EXPECT_EQ(contents("b.txt"), "b of both");
}

TEST_F(Resolve, ReplacesNothingThatIsKeptNowhere) {
    project.write({{"b.txt", "b of both"}});
    EXPECT_NE(failureOf(resolve(Version::theirs)), "done");
    EXPECT_EQ(contents("b.txt"), "b of both");
    EXPECT_EQ(failureOf(resolve(Version::theirs, "a.txt")), "'a.txt' has no conflict");
}

}  // namespace
