#include <engine/tree/Shape.h>
#include <tests/engine/tree/Trees.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using qrv::FileDelta;
using qrv_test::file;
using qrv_test::removal;
using qrv_test::treeOf;

std::string checked(const std::string& tree, const std::vector<FileDelta>& deltas) {
    const qrv::Tree files = treeOf(tree);
    const Expected<void> outcome = qrv::checkShape(questionsOf(files), deltas);
    return outcome ? "possible" : outcome.error().message.toNarrow();
}

TEST(TreeShape, AllowsWhatADiskCanHold) {
    EXPECT_EQ(checked("", {}), "possible");
    EXPECT_EQ(checked("a=1 b/c=1", {file("b/d", '2'), file("a", '3'), file("b-", '4')}),
              "possible");
    EXPECT_EQ(checked("b-=1 b0=1", {file("b/c", '2')}), "possible");
}

TEST(TreeShape, RefusesAFileInPlaceOfAFolderThatStays) {
    EXPECT_EQ(checked("a/b/c=1", {file("a", '2')}),
              "'a' and 'a/b/c' cannot be in one commit: one is a file where the other needs a "
              "folder");
    EXPECT_EQ(
        checked("a/b=1 a/c=1", {file("a", '2'), removal("a/b")}),
        "'a' and 'a/c' cannot be in one commit: one is a file where the other needs a folder");
}

TEST(TreeShape, RefusesAFolderInPlaceOfAFileThatStays) {
    EXPECT_EQ(checked("a/b=1", {file("a/b/c/d", '2')}),
              "'a/b/c/d' and 'a/b' cannot be in one commit: one is a file where the other needs a "
              "folder");
}

TEST(TreeShape, AllowsOneToTakeThePlaceOfTheOther) {
    EXPECT_EQ(checked("a/b=1 a/c=1", {removal("a/b"), removal("a/c"), file("a", '2')}), "possible");
    EXPECT_EQ(checked("a=1", {removal("a"), file("a/b/c", '2')}), "possible");
}

}  // namespace
