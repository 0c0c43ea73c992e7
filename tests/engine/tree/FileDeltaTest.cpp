#include <engine/tree/FileDelta.h>
#include <tests/engine/tree/Trees.h>

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace {

using qrv::FileDelta;
using qrv::Tree;
using qrv_test::file;
using qrv_test::randomTree;
using qrv_test::removal;
using qrv_test::shown;
using qrv_test::treeOf;

std::vector<FileDelta> deltasBetween(const Tree& before, const Tree& after) {
    return deltasOf(changesBetween(before, after));
}

Tree with(Tree tree, std::vector<FileDelta> deltas) {
    apply(std::move(deltas), tree);
    return tree;
}

TEST(DeltasOf, MakeTheOneTreeOfTheOther) {
    const std::vector<FileDelta> expected = {removal("a"), file("b", '2'), file("c", '3')};
    EXPECT_EQ(deltasBetween(treeOf("a=1 b=1 d=4"), treeOf("b=2 c=3 d=4")), expected);
    EXPECT_TRUE(deltasBetween(treeOf("a=1"), treeOf("a=1")).empty());
}

TEST(DeltasOf, LeadFromAnyTreeToAnyOther) {
    std::mt19937 random(1);
    for (int trial = 0; trial < qrv_test::randomTrials; ++trial) {
        const Tree before = randomTree(random);
        const Tree after = randomTree(random);
        ASSERT_EQ(shown(with(before, deltasBetween(before, after))), shown(after)) << shown(before);
    }
}

TEST(Apply, LetsAFileTakeTheNameThatARenamedOneHad) {
    EXPECT_EQ(shown(with(treeOf("a=1"), {file("a", '2'), file("b", '1', 1, "a")})),
              "a 2 1, b 1 1, ");
}

TEST(Apply, TakesNoOffenceAtAFileThatIsGone) {
    EXPECT_EQ(shown(with(treeOf("a=1"), {removal("b")})), "a 1 1, ");
}

}  // namespace
