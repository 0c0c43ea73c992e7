#include <common/json/Writer.h>
#include <common/server/Annotation.h>
#include <tests/common/server/Records.h>

#include <gmock/gmock.h>

#include <cstdint>
#include <limits>
#include <string>

namespace {

using common::Annotation;
using common::deserializeAnnotation;
using common::serializeAnnotation;
using qrv_test::Kind;
using qrv_test::kinds;
using qrv_test::missing;
using qrv_test::object;
using qrv_test::outcomeOf;
using qrv_test::wrongKind;

std::string outcome(const std::string& text) {
    return outcomeOf([&] { return deserializeAnnotation(object(text)); });
}

std::int64_t dateOf(const std::string& number) {
    return deserializeAnnotation(object(R"({"author":"a","date":)" + number + "}"))
        ->date.packedValue();
}

TEST(Annotation, IsWrittenAsThreeTexts) {
    EXPECT_EQ(jsonlib::json::write(serializeAnnotation(L"ada", L"some day", L"first\nsecond")),
              L"{\n    \"author\" : \"ada\",\n    \"date\" : \"some day\",\n"
              L"    \"message\" : \"first\\nsecond\"\n}");
}

TEST(Annotation, IsWrittenWithEmptyTexts) {
    EXPECT_EQ(jsonlib::json::write(serializeAnnotation(OdString(), OdString(), OdString())),
              L"{\n    \"author\" : \"\",\n    \"date\" : \"\",\n    \"message\" : \"\"\n}");
}

TEST(Annotation, IsReadWithItsDateAsANumber) {
    const Expected<Annotation> annotation =
        deserializeAnnotation(object(R"({"author":"a@b","date":1.7e12,"message":"m"})"));
    ASSERT_TRUE(annotation.hasValue());
    EXPECT_EQ(annotation->author, L"a@b");
    EXPECT_EQ(annotation->message, L"m");
    EXPECT_EQ(annotation->date.packedValue(), 1'700'000'000'000);
}

TEST(Annotation, HasAnEmptyMessageWithoutOne) {
    const Expected<Annotation> annotation =
        deserializeAnnotation(object(R"({"author":"a","date":0.0})"));
    ASSERT_TRUE(annotation.hasValue());
    EXPECT_EQ(annotation->message, L"");
    EXPECT_EQ(annotation->date.packedValue(), 0);
}

TEST(Annotation, CutsItsDateTowardZero) {
    EXPECT_EQ(dateOf("1.999"), 1);
    EXPECT_EQ(dateOf("-1.999"), -1);
    EXPECT_EQ(dateOf("0.5"), 0);
    EXPECT_EQ(dateOf("-0.5"), 0);
    EXPECT_EQ(dateOf("1709647629000.0"), 1'709'647'629'000);
}

TEST(Annotation, CutsADateThatDoesNotFitToTheNearestEnd) {
    constexpr std::int64_t first = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t last = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(dateOf("9223372036854774784.0"), 9'223'372'036'854'774'784);
    EXPECT_EQ(dateOf("9223372036854775808.0"), last);
    EXPECT_EQ(dateOf("1e300"), last);
    EXPECT_EQ(dateOf("1e999"), last);
    EXPECT_EQ(dateOf("-9223372036854775808.0"), first);
    EXPECT_EQ(dateOf("-1e300"), first);
    EXPECT_EQ(dateOf("-1e999"), first);
}

TEST(Annotation, RefusesEachFaultInTheOrderOfTheChecks) {
    const struct {
        const char* text;
        std::string outcome;
    } cases[] = {
        {R"({})", missing("annotation", "author")},
        {R"({"message":1})", missing("annotation", "author")},
        {R"({"author":1,"message":1})", wrongKind("string", "int", "message")},
        {R"({"author":1})", missing("annotation", "date")},
        {R"({"author":1,"message":"m"})", missing("annotation", "date")},
        {R"({"author":1,"date":2})", wrongKind("real", "int", "date")},
        {R"({"author":1,"date":2.0})", wrongKind("string", "int", "author")},
        {R"({"author":"a","date":"2024-01-01T00:00:00Z"})", wrongKind("real", "string", "date")},
        {R"({"author":"a","date":null})", wrongKind("real", "null", "date")},
        {R"({"author":"a","date":1.5,"message":null})", wrongKind("string", "null", "message")},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(outcome(text), expected) << text;
}

TEST(Annotation, TakesOneKindForEachMember) {
    for (const Kind& kind : kinds) {
        const std::string name = kind.name;
        const std::string value = kind.text;
        EXPECT_EQ(outcome(R"({"date":1.5,"author":)" + value + "}"),
                  name == "string" ? "a value" : wrongKind("string", name, "author"));
        EXPECT_EQ(outcome(R"({"author":"a","date":1.5,"message":)" + value + "}"),
                  name == "string" ? "a value" : wrongKind("string", name, "message"));
        EXPECT_EQ(outcome(R"({"author":"a","date":)" + value + "}"),
                  name == "real" ? "a value" : wrongKind("real", name, "date"));
    }
}

TEST(Annotation, ThatIsWrittenCannotBeReadBack) {
    EXPECT_EQ(
        outcomeOf([] {
            return deserializeAnnotation(serializeAnnotation(L"a", L"2024-03-05T14:07:09Z", L"m"));
        }),
        wrongKind("real", "string", "date"));
}

}  // namespace
