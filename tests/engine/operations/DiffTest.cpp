#include <engine/operations/Diff.h>
#include <tests/engine/operations/TwoSides.h>

#include <string>
#include <string_view>

namespace {

using qrv_test::failureOf;

class Diff : public qrv_test::TwoSides {};

TEST_F(Diff, OfTwoCommitsIsThatOfTheirFiles) {
    const auto found = diff(root(), {L"master", L"side", {}}, caller);
    ASSERT_EQ(found->size(), 2U);
    EXPECT_EQ(found->front().path, OdString(L"a.txt"));
    EXPECT_TRUE(found->front().hasOtherContents());
    EXPECT_EQ(found->back().path, OdString(L"b.txt"));
}

TEST_F(Diff, GivesTheLinesOfTheWorkingFiles) {
    project.write({{"a.txt", "other"}});
    std::string lines;
    ASSERT_TRUE(diffLines(
        root(), {std::nullopt, std::nullopt, {(project / "a.txt").native()}},
        [&lines](const qrv::Difference& difference) { lines += difference.path.toNarrow() + '\n'; },
        [&lines](qrv::PatchLine kind, std::string_view line) {
            if (kind == qrv::PatchLine::added || kind == qrv::PatchLine::removed)
                lines += std::string(line) + '\n';
        },
        caller));
    EXPECT_EQ(lines, "a.txt\n-a of master\n+other\n");
}

TEST_F(Diff, FailsForAPathOnNeitherSide) {
    const std::string path = (project / "none").native();
    EXPECT_EQ(failureOf(diff(root(), {std::nullopt, std::nullopt, {path}}, caller)),
              "'" + path + "' is on neither side of the comparison");
}

}  // namespace
