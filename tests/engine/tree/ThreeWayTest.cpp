#include <engine/tree/ThreeWay.h>
#include <tests/engine/tree/Trees.h>

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

using qrv_test::letterOf;
using qrv_test::treeOf;

qrv::ThreeWayResult compareThreeWays(const qrv::Tree& base, const qrv::Tree& ours,
                                     const qrv::Tree& theirs) {
    return compareThreeWays(changesBetween(base, ours), changesBetween(base, theirs));
}

/// "path before>after, ..." of what comes over, then "path local/remote, ..." of the conflicts.
std::string compared(const std::string& base, const std::string& ours, const std::string& theirs) {
    const qrv::ThreeWayResult result = compareThreeWays(treeOf(base), treeOf(ours), treeOf(theirs));
    std::string text;
    for (const qrv::TreeStep& step : result.taken)
        text += step.path.bytes() + " " + letterOf(step.before) + ">" + letterOf(step.after) + ", ";
    for (const qrv::MergeConflict& conflict : result.conflicts)
        text += conflict.path.bytes() + " " + common::toString(conflict.local)->toNarrow() + " " +
                letterOf(conflict.localUrl) + "/" + common::toString(conflict.remote)->toNarrow() +
                " " + letterOf(conflict.remoteUrl) + ", ";
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

/// The tree that a merge into `ours` makes where nothing is in conflict.
qrv::Tree merged(qrv::Tree ours, const qrv::ThreeWayResult& result) {
    for (const qrv::TreeStep& step : result.taken) {
        EXPECT_EQ(qrv::urlIn(ours, step.path), step.before);
        ours.erase(step.path);
        if (!step.after.isEmpty())
            ours[step.path] = {step.after, step.sizeBytes};
    }
    return ours;
}

TEST(ThreeWay, ComesToTheSameFromEitherSide) {
    std::mt19937 random(1);
    for (int trial = 0; trial < qrv_test::randomTrials; ++trial) {
        const qrv::Tree base = qrv_test::randomTree(random);
        const qrv::Tree ours = qrv_test::randomTree(random);
        const qrv::Tree theirs = qrv_test::randomTree(random);
        const qrv::ThreeWayResult here = compareThreeWays(base, ours, theirs);
        const qrv::ThreeWayResult there = compareThreeWays(base, theirs, ours);
        qrv::Tree mine = merged(ours, here);
        qrv::Tree other = merged(theirs, there);
        ASSERT_EQ(here.conflicts.size(), there.conflicts.size());
        for (std::size_t place = 0; place < here.conflicts.size(); ++place) {
            const qrv::MergeConflict& conflict = here.conflicts[place];
            const qrv::MergeConflict mirrored = {conflict.path, conflict.remote, conflict.local,
                                                 conflict.remoteUrl, conflict.localUrl};
            ASSERT_EQ(there.conflicts[place], mirrored);
            mine.erase(conflict.path);
            other.erase(conflict.path);
        }
        ASSERT_EQ(qrv_test::shown(mine), qrv_test::shown(other));
    }
}

}  // namespace
