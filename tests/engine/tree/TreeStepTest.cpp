#include <engine/tree/TreeStep.h>
#include <tests/engine/tree/Trees.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using qrv::TreeStep;
using qrv_test::letterOf;
using qrv_test::treeOf;

std::string steps(const std::string& before, const std::string& after) {
    std::string text;
    for (const TreeStep& step : stepsOf(changesBetween(treeOf(before), treeOf(after))))
        text += step.path.bytes() + " " + letterOf(step.before) + ">" + letterOf(step.after) + ", ";
    return text;
}

TEST(TreeSteps, LeadFromOneTreeToTheOther) {
    EXPECT_EQ(steps("", ""), "");
    EXPECT_EQ(steps("a=1 b=2", "a=1 b=2"), "");
    EXPECT_EQ(steps("a=1 c=1 d=1", "b=2 c=2 d=1 e=3"), "a 1>-, b ->2, c 1>2, e ->3, ");
    EXPECT_EQ(steps("a=1 b=1", ""), "a 1>-, b 1>-, ");
    EXPECT_EQ(steps("", "a=1 b=1"), "a ->1, b ->1, ");
}

}  // namespace
