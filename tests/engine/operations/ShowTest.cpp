#include <engine/operations/Show.h>
#include <tests/engine/operations/TwoSides.h>

#include <string>
#include <string_view>

namespace {

using qrv_test::failureOf;

class Show : public qrv_test::TwoSides {};

TEST_F(Show, GivesACommitWithItsChanges) {
    const auto shown = show(root(), "side", {}, caller);
    ASSERT_TRUE(shown && *shown);
    EXPECT_EQ((*shown)->commit.message, OdString(L"On the side"));
    ASSERT_EQ((*shown)->changes.size(), 1U);
    EXPECT_EQ((*shown)->changes.front().path, OdString(L"b.txt"));
}

TEST_F(Show, GivesTheContentsOfAFile) {
    std::string contents;
    const auto shown = show(
        root(), "side:" + (project / "b.txt").native(),
        [&contents](std::string_view part) { contents += part; }, caller);
    ASSERT_TRUE(shown);
    EXPECT_FALSE(*shown);
    EXPECT_EQ(contents, "b of the side");
}

TEST_F(Show, FailsForAFileThatIsNotThere) {
    const std::string path = (project / "none").native();
    EXPECT_EQ(failureOf(show(
                  root(), "side:" + path, [](std::string_view) {}, caller)),
              "'" + path + "' is not in the commit");
}

}  // namespace
