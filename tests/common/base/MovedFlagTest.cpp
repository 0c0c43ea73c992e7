#include <common/base/MovedFlag.h>

#include <gmock/gmock.h>

#include <type_traits>
#include <utility>

namespace {

using common::MovedFlag;

TEST(MovedFlag, IsNotSetAtFirst) {
    EXPECT_FALSE(MovedFlag());
}

TEST(MovedFlag, HoldsWhatItIsGiven) {
    EXPECT_TRUE(MovedFlag(true));
    MovedFlag flag;
    flag = true;
    EXPECT_TRUE(flag);
}

TEST(MovedFlag, IsKeptByACopy) {
    const MovedFlag first(true);
    const MovedFlag second(first);
    MovedFlag third;
    third = first;
    EXPECT_TRUE(first);
    EXPECT_TRUE(second);
    EXPECT_TRUE(third);
}

TEST(MovedFlag, IsTakenAwayByAMove) {
    MovedFlag first(true);
    MovedFlag second(std::move(first));
    EXPECT_FALSE(first);
    EXPECT_TRUE(second);
    MovedFlag third;
    third = std::move(second);
    EXPECT_FALSE(second);
    EXPECT_TRUE(third);
}

TEST(MovedFlag, OfAMoveReplacesTheOldOne) {
    MovedFlag unset;
    MovedFlag target(true);
    target = std::move(unset);
    EXPECT_FALSE(target);
}

TEST(MovedFlag, SurvivesAMoveToItself) {
    MovedFlag flag(true);
    MovedFlag& same = flag;
    flag = std::move(same);
    EXPECT_TRUE(flag);
}

TEST(MovedFlag, MovesWithoutThrowing) {
    EXPECT_TRUE(std::is_nothrow_move_constructible_v<MovedFlag>);
    EXPECT_TRUE(std::is_nothrow_move_assignable_v<MovedFlag>);
}

}  // namespace
