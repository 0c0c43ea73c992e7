#include <engine/worktree/ThreeWay.h>
#include <tests/engine/worktree/Trees.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using qrv::compareThreeWays;
using qrv_test::letterOf;
using qrv_test::treeOf;

/// "path before>after, ..." of what comes over, then "path local/remote, ..." of the conflicts.
std::string compared(const std::string& base, const std::string& ours, const std::string& theirs) {
    const qrv::ThreeWayResult result = compareThreeWays(treeOf(base), treeOf(ours), treeOf(theirs));
    std::string text;
    for (const qrv::PlannedFile& step : result.taken)
        text +=
            step.path.toNarrow() + " " + letterOf(step.before) + ">" + letterOf(step.after) + ", ";
    for (const qrv::MergeConflict& conflict : result.conflicts)
        text += conflict.path.toNarrow() + " " + common::toString(conflict.local)->toNarrow() +
                " " + letterOf(conflict.localUrl) + "/" +
                common::toString(conflict.remote)->toNarrow() + " " + letterOf(conflict.remoteUrl) +
                ", ";
    return text;
}

TEST(ThreeWay, TakesNothingWhereTheOtherSideDidNothing) {
    EXPECT_EQ(compared("", "", ""), "");
    EXPECT_EQ(compared("a=1 b=1", "a=2 c=3", "a=1 b=1"), "");
}

TEST(ThreeWay, TakesWhatOnlyTheOtherSideChanged) {
    EXPECT_EQ(compared("a=1 b=1 c=1", "a=1 b=1 c=1", "a=2 c=1 d=4"), "a 1>2, b 1>-, d ->4, ");
}

TEST(ThreeWay, TakesNothingThatBothDidAlike) {
    EXPECT_EQ(compared("a=1 b=1", "a=2 c=3", "a=2 c=3"), "");
}

TEST(ThreeWay, FindsEachKindOfConflict) {
    EXPECT_EQ(compared("a=1", "a=2", "a=3"), "a modified 2/modified 3, ");
    EXPECT_EQ(compared("a=1", "a=2", ""), "a modified 2/removed -, ");
    EXPECT_EQ(compared("a=1", "", "a=3"), "a removed -/modified 3, ");
    EXPECT_EQ(compared("", "a=2", "a=3"), "a added 2/added 3, ");
}

TEST(ThreeWay, OrdersBothListsByPath) {
    EXPECT_EQ(compared("b=1 d=1", "b=2 d=2", "a=1 b=3 c=1 d=3"),
              "a ->1, c ->1, b modified 2/modified 3, d modified 2/modified 3, ");
}

TEST(ThreeWay, NeverLosesOrInventsAVersion) {
    const std::string versions[] = {"", "a=1", "a=2", "a=3"};
    for (const std::string& base : versions) {
        for (const std::string& ours : versions) {
            for (const std::string& theirs : versions) {
                const std::string text = compared(base, ours, theirs);
                const bool isConflict = text.find('/') != std::string::npos;
                const bool isTaken = text.find('>') != std::string::npos;
                EXPECT_EQ(isConflict, ours != theirs && ours != base && theirs != base);
                EXPECT_EQ(isTaken, ours == base && theirs != base)
                    << base << " " << ours << " " << theirs;
            }
        }
    }
}

}  // namespace
