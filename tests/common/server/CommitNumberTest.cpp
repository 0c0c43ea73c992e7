#include <common/server/CommitNumber.h>
#include <tests/common/server/Records.h>

#include <gmock/gmock.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace {

using common::CommitNumberPair;
using common::deserializeCommitNumber;
using common::deserializeCommitNumbers;
using qrv_test::array;
using qrv_test::Kind;
using qrv_test::kinds;
using qrv_test::missing;
using qrv_test::notAnObject;
using qrv_test::object;
using qrv_test::outcomeOf;
using qrv_test::wrongKind;

std::string outcome(const std::string& text) {
    return outcomeOf([&] { return deserializeCommitNumber(object(text)); });
}

std::string listOutcome(const std::string& text) {
    return outcomeOf([&] { return deserializeCommitNumbers(array(text)); });
}

std::uint64_t numberOf(const std::string& number) {
    return deserializeCommitNumber(object(R"({"hash":"h","commitNo":)" + number + "}"))->commitNo;
}

TEST(CommitNumber, HasAHashAndANumber) {
    const Expected<CommitNumberPair> pair =
        deserializeCommitNumber(object(R"({"commitNo":12,"hash":"abc"})"));
    ASSERT_TRUE(pair.hasValue());
    EXPECT_EQ(pair->hash, L"abc");
    EXPECT_EQ(pair->commitNo, 12U);
}

TEST(CommitNumber, TakesTheSixtyFourBitsAsUnsigned) {
    constexpr std::uint64_t last = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(numberOf("0"), 0U);
    EXPECT_EQ(numberOf("18446744073709551615"), last);
    EXPECT_EQ(numberOf("-1"), last);
    EXPECT_EQ(numberOf("99999999999999999999999"), last);
    EXPECT_EQ(numberOf("-99999999999999999999999"), std::uint64_t{1} << 63);
}

TEST(CommitNumber, RefusesEachFaultInTheOrderOfTheChecks) {
    const struct {
        const char* text;
        std::string outcome;
    } cases[] = {
        {R"({})", missing("commit number", "hash")},
        {R"({"commitNo":1})", missing("commit number", "hash")},
        {R"({"hash":1})", missing("commit number", "commitNo")},
        {R"({"hash":1,"commitNo":"1"})", wrongKind("string", "int", "hash")},
        {R"({"hash":"h","commitNo":"1"})", wrongKind("int", "string", "commitNo")},
        {R"({"hash":"h","commitNo":1.0})", wrongKind("int", "real", "commitNo")},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(outcome(text), expected) << text;
}

TEST(CommitNumber, TakesOneKindForEachMember) {
    for (const Kind& kind : kinds) {
        const std::string name = kind.name;
        const std::string value = kind.text;
        EXPECT_EQ(outcome(R"({"commitNo":1,"hash":)" + value + "}"),
                  name == "string" ? "a value" : wrongKind("string", name, "hash"));
        EXPECT_EQ(outcome(R"({"hash":"h","commitNo":)" + value + "}"),
                  name == "int" ? "a value" : wrongKind("int", name, "commitNo"));
    }
}

TEST(CommitNumbers, KeepTheirOrder) {
    const Expected<std::vector<CommitNumberPair>> pairs =
        deserializeCommitNumbers(array(R"([{"hash":"h","commitNo":9},{"hash":"g","commitNo":1}])"));
    ASSERT_TRUE(pairs.hasValue());
    ASSERT_EQ(pairs->size(), 2U);
    EXPECT_EQ((*pairs)[0].hash, L"h");
    EXPECT_EQ((*pairs)[0].commitNo, 9U);
    EXPECT_EQ((*pairs)[1].hash, L"g");
    EXPECT_EQ((*pairs)[1].commitNo, 1U);
}

TEST(CommitNumbers, EndAtTheFirstBadElement) {
    const struct {
        const char* text;
        std::string outcome;
    } cases[] = {
        {R"([])", "a value"},
        {R"([{"hash":"h","commitNo":1},{"hash":"g"}])", missing("commit number", "commitNo")},
        {R"([{"hash":"h","commitNo":1},[],{}])", notAnObject("array")},
        {R"([null])", notAnObject("null")},
        {R"([{"hash":"h","commitNo":1.5},1])", wrongKind("int", "real", "commitNo")},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(listOutcome(text), expected) << text;
}

}  // namespace
