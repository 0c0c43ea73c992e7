#include <common/server/ServerAnswer.h>
#include <tests/common/server/Records.h>

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>

namespace {

using common::deserializeInitData;
using common::deserializeServerVersion;
using qrv_test::Kind;
using qrv_test::kinds;
using qrv_test::missing;
using qrv_test::object;
using qrv_test::outcomeOf;
using qrv_test::wrongKind;

std::string initOutcome(const std::string& text) {
    return outcomeOf([&] { return deserializeInitData(object(text)); });
}

std::string versionOutcome(const std::string& text) {
    return outcomeOf([&] { return deserializeServerVersion(OdString::fromNarrow(text)); });
}

TEST(InitData, IsTheIdentifier) {
    EXPECT_EQ(deserializeInitData(object(R"({"id":" 12/x ","name":1})")).value(), L" 12/x ");
    EXPECT_EQ(deserializeInitData(object(R"({"id":""})")).value(), L"");
}

TEST(InitData, RefusesEachFaultWithItsText) {
    EXPECT_EQ(initOutcome("{}"), missing("init data", "id"));
    EXPECT_EQ(initOutcome(R"({"ID":"1"})"), missing("init data", "id"));
    for (const Kind& kind : kinds) {
        const std::string name = kind.name;
        EXPECT_EQ(initOutcome(R"({"id":)" + std::string(kind.text) + "}"),
                  name == "string" ? "a value" : wrongKind("string", name, "id"));
    }
}

TEST(ServerVersion, IsGivenAsItStands) {
    EXPECT_EQ(deserializeServerVersion(OdString(L"{\"commandVersion\":\"3\"}")).value(), L"3");
    EXPECT_EQ(deserializeServerVersion(OdString(L"{\"commandVersion\":\" 03.x\"} tail")).value(),
              L" 03.x");
}

TEST(ServerVersion, RefusesEachFaultWithItsText) {
    EXPECT_EQ(versionOutcome("{}"), missing("server version", "commandVersion"));
    for (const Kind& kind : kinds) {
        const std::string name = kind.name;
        EXPECT_EQ(versionOutcome(R"({"commandVersion":)" + std::string(kind.text) + "}"),
                  name == "string" ? "a value" : wrongKind("string", name, "commandVersion"));
        EXPECT_EQ(versionOutcome(kind.text), name == "object"
                                                 ? missing("server version", "commandVersion")
                                                 : wrongKind("object", name));
    }
}

TEST(ServerVersion, ReportsTextThatIsNoJsonAsNull) {
    for (const char* text : {"", "3", "<html>", "{\"commandVersion\":"}) {
        const std::string found = text == std::string("3") ? "int" : "null";
        EXPECT_EQ(versionOutcome(text), wrongKind("object", found)) << text;
    }
}

TEST(ServerVersion, ThrowsForATextThatEndsInsideAString) {
    EXPECT_THROW(static_cast<void>(deserializeServerVersion(OdString(L"{\"commandVersion\":\"3"))),
                 std::length_error);
}

}  // namespace
