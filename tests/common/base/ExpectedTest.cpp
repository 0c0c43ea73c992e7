#include <common/base/Expected.h>

#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

using testing::Pointee;

Expected<std::string> half(int number) {
    if (number % 2 != 0)
        return ErrorMessage{L"odd", 7};
    return std::to_string(number / 2);
}

Expected<void> check(int number) {
    if (number % 2 != 0)
        return ErrorMessage{L"odd", 7};
    return {};
}

template <class Action>
std::string logicErrorOf(Action action) {
    try {
        action();
    } catch (const std::logic_error& error) {
        return error.what();
    }
    return "nothing was thrown";
}

TEST(ErrorMessage, HasCodeZeroUnlessToldOtherwise) {
    const ErrorMessage error{L"text"};
    EXPECT_EQ(error.message, L"text");
    EXPECT_EQ(error.code, 0);
}

TEST(Expected, HoldsAValue) {
    Expected<std::string> result = half(8);
    EXPECT_TRUE(result.hasValue());
    EXPECT_TRUE(result);
    EXPECT_EQ(result.value(), "4");
    EXPECT_EQ(*result, "4");
    EXPECT_EQ(result->size(), 1u);
    const Expected<std::string>& constant = result;
    EXPECT_EQ(constant.value(), "4");
    EXPECT_EQ(*constant, "4");
    EXPECT_EQ(constant->size(), 1u);
}

TEST(Expected, HoldsAnErrorWithItsCode) {
    const Expected<std::string> result = half(3);
    EXPECT_FALSE(result.hasValue());
    EXPECT_FALSE(result);
    EXPECT_EQ(result.error().message, L"odd");
    EXPECT_EQ(result.error().code, 7);
}

TEST(Expected, ThrowsWhenAskedForTheSideThatIsNotThere) {
    Expected<std::string> error = half(3);
    const std::string noValue = "Expected: there is an error, not a value";
    EXPECT_EQ(logicErrorOf([&] { error.value().clear(); }), noValue);
    EXPECT_EQ(logicErrorOf([&] { (*error).clear(); }), noValue);
    EXPECT_EQ(logicErrorOf([&] { error->clear(); }), noValue);
    EXPECT_EQ(logicErrorOf([&] { std::as_const(error)->size(); }), noValue);
    EXPECT_EQ(logicErrorOf([&] { std::string(*std::move(error)); }), noValue);

    const Expected<std::string> value = half(8);
    EXPECT_EQ(logicErrorOf([&] { static_cast<void>(value.error()); }),
              "Expected: there is a value, not an error");
}

TEST(Expected, LetsItsValueBeChanged) {
    Expected<std::string> result = half(8);
    *result += "0";
    result.value() += "1";
    result->append("2");
    EXPECT_EQ(*result, "4012");
}

TEST(Expected, HoldsWhatCanOnlyBeMoved) {
    Expected<std::unique_ptr<int>> result = std::make_unique<int>(5);
    const std::unique_ptr<int> value = *std::move(result);
    EXPECT_THAT(value, Pointee(5));
}

TEST(Expected, TellsAValueFromAnErrorOfTheSameType) {
    EXPECT_FALSE((Expected<int>(ErrorMessage{L"text"})));
    EXPECT_TRUE((Expected<bool>(false)).hasValue());
    EXPECT_FALSE(*Expected<bool>(false));
}

TEST(Expected, IsCopiedAndMovedWhole) {
    Expected<std::string> value = half(8);
    const Expected<std::string> copy = value;
    const Expected<std::string> moved = std::move(value);
    EXPECT_EQ(*copy, "4");
    EXPECT_EQ(*moved, "4");
    const Expected<std::string> error = half(3);
    const Expected<std::string> errorCopy = error;
    EXPECT_EQ(errorCopy.error().message, L"odd");
}

TEST(Expected, OfNothingIsSuccessOrAnError) {
    EXPECT_TRUE(check(8).hasValue());
    EXPECT_TRUE(check(8));
    EXPECT_NO_THROW(check(8).value());
    EXPECT_NO_THROW(*check(8));

    const Expected<void> error = check(3);
    EXPECT_FALSE(error.hasValue());
    EXPECT_FALSE(error);
    EXPECT_EQ(error.error().message, L"odd");
    EXPECT_EQ(error.error().code, 7);
}

TEST(Expected, OfNothingThrowsWhenAskedForTheSideThatIsNotThere) {
    EXPECT_EQ(logicErrorOf([] { check(3).value(); }), "Expected: there is an error, not a value");
    EXPECT_EQ(logicErrorOf([] { *check(3); }), "Expected: there is an error, not a value");
    EXPECT_EQ(logicErrorOf([] { static_cast<void>(check(8).error()); }),
              "Expected: there is a value, not an error");
}

}  // namespace
