#include <common/server/Reference.h>
#include <tests/common/server/Records.h>

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using common::deserializeReference;
using common::deserializeReferences;
using common::Reference;
using common::RefType;
using qrv_test::Kind;
using qrv_test::kinds;
using qrv_test::missing;
using qrv_test::notAnObject;
using qrv_test::object;
using qrv_test::outcomeOf;
using qrv_test::wrongKind;

const std::string noHash = "error: No commit hash found in reference.";
const std::string noName = "error: No name found in reference.";
const std::string noType = "error: No reference type found in reference.";

std::string outcome(const std::string& text) {
    return outcomeOf([&] { return deserializeReference(object(text)); });
}

std::string listOutcome(const std::string& text) {
    return outcomeOf([&] { return deserializeReferences(OdString::fromNarrow(text)); });
}

TEST(Reference, TypesHaveTheirNumbers) {
    EXPECT_EQ(static_cast<int>(RefType::Branch), 0);
    EXPECT_EQ(static_cast<int>(RefType::Tag), 1);
}

TEST(Reference, IsReadAsABranch) {
    const Expected<Reference> reference =
        deserializeReference(object(R"({"name":"main","commitHash":"abc","refType":"branch"})"));
    ASSERT_TRUE(reference.hasValue());
    EXPECT_EQ(reference->name, L"main");
    EXPECT_EQ(reference->commitHash, L"abc");
    EXPECT_EQ(reference->type, RefType::Branch);
    EXPECT_FALSE(reference->annotation.has_value());
}

TEST(Reference, IsReadAsATag) {
    const Expected<Reference> reference =
        deserializeReference(object(R"({"name":"","commitHash":"","refType":"tag"})"));
    ASSERT_TRUE(reference.hasValue());
    EXPECT_EQ(reference->name, L"");
    EXPECT_EQ(reference->commitHash, L"");
    EXPECT_EQ(reference->type, RefType::Tag);
}

TEST(Reference, RefusesEachFaultInTheOrderOfTheChecks) {
    const struct {
        const char* text;
        std::string outcome;
    } cases[] = {
        {R"({})", noHash},
        {R"({"name":"x","refType":"tag"})", noHash},
        {R"({"commitHash":1})", noName},
        {R"({"commitHash":1,"refType":2})", noName},
        {R"({"commitHash":1,"name":2})", noType},
        {R"({"commitHash":1,"name":2,"refType":3})", wrongKind("string", "int", "refType")},
        {R"({"commitHash":1,"name":2,"refType":"x"})", "error: Unsupported type: x"},
        {R"({"commitHash":1,"name":2,"refType":"tag"})", wrongKind("string", "int", "name")},
        {R"({"commitHash":1,"name":"n","refType":"tag"})",
         wrongKind("string", "int", "commitHash")},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(outcome(text), expected) << text;
}

TEST(Reference, TakesTheTwoTypesInExactlyTheirSpelling) {
    using namespace std::string_literals;
    const std::string types[] = {"Branch", "TAG", "", " tag", "tag ", "branch\0"s, "%ls"};
    for (const std::string& type : types) {
        jsonlib::json::Object record = object(R"({"name":"n","commitHash":"c"})");
        record[L"refType"] = OdString::fromNarrow(type).toWide();
        EXPECT_EQ(outcomeOf([&] { return deserializeReference(record); }),
                  "error: Unsupported type: " + type);
    }
}

TEST(Reference, TakesNoOtherKindThanATextForAMember) {
    for (const Kind& kind : kinds) {
        const bool isText = std::string(kind.name) == "string";
        const std::string value = kind.text;
        EXPECT_EQ(outcome(R"({"commitHash":"c","refType":"tag","name":)" + value + "}"),
                  isText ? "a value" : wrongKind("string", kind.name, "name"));
        EXPECT_EQ(outcome(R"({"name":"n","refType":"tag","commitHash":)" + value + "}"),
                  isText ? "a value" : wrongKind("string", kind.name, "commitHash"));
        EXPECT_EQ(
            outcome(R"({"name":"n","commitHash":"c","refType":)" + value + "}"),
            isText ? "error: Unsupported type: text" : wrongKind("string", kind.name, "refType"));
    }
}

TEST(Reference, DropsItsAnnotation) {
    const Expected<Reference> reference =
        deserializeReference(object(R"({"name":"n","commitHash":"c","refType":"tag",)"
                                    R"("annotation":{"author":"a","date":1.5,"message":"m"}})"));
    ASSERT_TRUE(reference.hasValue());
    EXPECT_FALSE(reference->annotation.has_value());
}

TEST(Reference, IgnoresAnAnnotationThatLacksSomethingOrIsNone) {
    std::vector<std::string> annotations = {"{}", R"({"author":"a"})", R"({"date":1.5})"};
    for (const Kind& kind : kinds)
        annotations.emplace_back(kind.text);
    for (const std::string& annotation : annotations) {
        EXPECT_EQ(outcome(R"({"name":"n","commitHash":"c","refType":"tag","annotation":)" +
                          annotation + "}"),
                  "a value")
            << annotation;
    }
}

TEST(Reference, ThrowsForAWrongKindInItsAnnotationBeforeAnythingElse) {
    EXPECT_EQ(outcome(R"({"annotation":{"author":"a","message":1}})"),
              wrongKind("string", "int", "message"));
    EXPECT_EQ(outcome(R"({"annotation":{"author":"a","date":"2024-01-01T00:00:00Z"}})"),
              wrongKind("real", "string", "date"));
    EXPECT_EQ(outcome(R"({"annotation":{"author":1,"date":1.5}})"),
              wrongKind("string", "int", "author"));
}

TEST(References, KeepTheOrderOfTheText) {
    const Expected<std::vector<Reference>> references = deserializeReferences(
        OdString(L"[{\"name\":\"z\",\"commitHash\":\"1\",\"refType\":\"tag\"},"
                 L"{\"name\":\"a\",\"commitHash\":\"2\",\"refType\":\"branch\"}]"));
    ASSERT_TRUE(references.hasValue());
    ASSERT_EQ(references->size(), 2U);
    EXPECT_EQ((*references)[0].name, L"z");
    EXPECT_EQ((*references)[0].type, RefType::Tag);
    EXPECT_EQ((*references)[1].name, L"a");
    EXPECT_EQ((*references)[1].type, RefType::Branch);
}

TEST(References, RefuseEachFaultWithItsText) {
    const std::string good = R"({"name":"n","commitHash":"c","refType":"tag"})";
    const struct {
        std::string text;
        std::string outcome;
    } cases[] = {
        {"[]", "a value"},
        {"[" + good + "]", "a value"},
        {"[1]", notAnObject("int")},
        {"[" + good + ",{},1]", noHash},
        {"[" + good + ",\"{}\",{}]", notAnObject("string")},
        {"{}", wrongKind("array", "object")},
        {"", wrongKind("array", "null")},
        {"[", wrongKind("array", "null")},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(listOutcome(text), expected) << text;
}

}  // namespace
