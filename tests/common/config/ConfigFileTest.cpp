#include <tests/common/config/Configuration.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::configSample;
using qrv_test::Configuration;
using qrv_test::Projects;
using qrv_test::shown;

const std::string notJson = "Unable to parse json, please check if syntax is valid";

std::string wrongKind(const std::string& expected, const std::string& found,
                      const std::string& key = "") {
    const std::string line = "Error:\tExpected json type '" + expected + "', found '" + found + "'";
    return key.empty() ? line : line + "\njson key:\t\"" + key + "\"";
}

std::string missing(const std::string& key) {
    return "Unable to find json key '" + key + "'\njson key:\t\"" + key + "\"";
}

std::string notAnObject(const std::string& found) {
    return "Encounterd 'object', found '" + found + ". While parsing json map.'";
}

/// The error with which a file of these bytes is refused, or the registry that it loads as.
std::string outcome(const std::string& bytes) {
    const Configuration configuration;
    configuration.write(bytes);
    const auto config = configuration.load();
    EXPECT_EQ(configuration.bytes(), bytes);
    if (config)
        return "loaded " + std::to_string((*config)->readProjects().size());
    return (config.error().code == 0 ? "" : "with a code: ") + config.error().message.toNarrow();
}

std::string projects(const std::string& elements) {
    return R"({"projects_map":[)" + elements + "]}";
}

const std::string good = R"({"info":{"name":"n","uid":"u"},"path":"/none/a"})";

/// A project whose one member is replaced by a value.
std::string projectWith(const std::string& member, const std::string& value) {
    const auto valueOf = [&](const std::string& name, const std::string& usual) {
        return "\"" + name + "\":" + (name == member ? value : usual);
    };
    const std::string info = "{" + valueOf("name", "\"n\"") + "," + valueOf("uid", "\"u\"") + "}";
    return projects("{" + valueOf("info", info) + "," + valueOf("path", "\"/none/a\"") + "}");
}

TEST(ConfigFile, SampleIsReadAndWrittenBackByteForByte) {
    Configuration configuration;
    configuration.write(configSample("directories"));
    {
        const auto config = configuration.loaded();
        EXPECT_EQ(shown(config->readProjects()),
                  (Projects{{"/projects/B\xC3\xBCro", "B\xC3\xBCro \"Nord\"", "{2}"},
                            {"/projects/Rathaus", "Rathaus\nUmbau", "{1}"}}));
        static_cast<void>(config->write());
    }
    ASSERT_EQ(configuration.io.results.size(), 1U);
    EXPECT_TRUE(configuration.io.results[0].hasValue());
    EXPECT_EQ(configuration.bytes(), configSample("directories"));
}

TEST(ConfigFile, OfAnEmptyRegistryIsAnEmptyObject) {
    Configuration configuration;
    configuration.write(projects(good));
    configuration.loaded()->write().data.remove(L"/none/a");
    EXPECT_EQ(configuration.bytes(), configSample("empty"));
    EXPECT_EQ(configuration.bytes(), "{\n}");
}

TEST(ConfigFile, IsReadWhenItSaysNothing) {
    for (const char* bytes : {"{}", "{\n}", "\xEF\xBB\xBF{}", R"({"other":[1]})", "{} tail",
                              R"({"projects_map":[]})", R"({"Projects_map":7})"})
        EXPECT_EQ(outcome(bytes), "loaded 0") << bytes;
}

TEST(ConfigFile, IsReadWithMembersInAnyOrderAndUnknownOnes) {
    EXPECT_EQ(outcome(projects(R"({"path":"/none/a","x":1,"info":{"uid":"u","y":[],"name":"n"}},)" +
                               good)),
              "loaded 1");
}

TEST(ConfigFile, KeepsTheFirstOfEqualPaths) {
    const Configuration configuration;
    configuration.write(projects(R"({"info":{"name":"1","uid":"1"},"path":"/none/b"},)"
                                 R"({"info":{"name":"2","uid":"2"},"path":"/none/a"},)"
                                 R"({"info":{"name":"3","uid":"3"},"path":"/none/b"},)"
                                 R"({"info":{"name":"4","uid":"4"},"path":"/none/B"})"));
    EXPECT_EQ(shown(configuration.loaded()->readProjects()),
              (Projects{{"/none/B", "4", "4"}, {"/none/a", "2", "2"}, {"/none/b", "1", "1"}}));
}

TEST(ConfigFile, IsRefusedWhenItIsNoJson) {
    for (const char* bytes : {"", " ", "\n", "projects", "{", "{\"projects_map\":[}", "\xFF"})
        EXPECT_EQ(outcome(bytes), notJson) << bytes;
}

TEST(ConfigFile, IsRefusedWhenItIsNoObject) {
    EXPECT_EQ(outcome("[]"), wrongKind("object", "array"));
    EXPECT_EQ(outcome("1"), wrongKind("object", "int"));
    EXPECT_EQ(outcome("null"), wrongKind("object", "null"));
}

TEST(ConfigFile, IsRefusedWhenItsRegistryIsNoArrayOfObjects) {
    EXPECT_EQ(outcome(R"({"projects_map":{}})"), wrongKind("array", "object", "projects_map"));
    EXPECT_EQ(outcome(R"({"projects_map":null})"), wrongKind("array", "null", "projects_map"));
    EXPECT_EQ(outcome(projects(R"("/none/a")")), notAnObject("string"));
    EXPECT_EQ(outcome(projects(good + ",1,{}")), notAnObject("int"));
    EXPECT_EQ(outcome(projects(good + ",[]")), notAnObject("array"));
}

TEST(ConfigFile, IsRefusedForAFaultyProjectInTheOrderOfTheChecks) {
    const struct {
        std::string element;
        std::string outcome;
    } cases[] = {
        {"{}", missing("info")},
        {R"({"path":1})", missing("info")},
        {R"({"info":1,"path":1})", wrongKind("object", "int", "info")},
        {R"({"info":{},"path":1})", missing("uid")},
        {R"({"info":{"name":1},"path":1})", missing("uid")},
        {R"({"info":{"name":1,"uid":2},"path":1})", wrongKind("string", "int", "uid")},
        {R"({"info":{"uid":"2"},"path":1})", missing("name")},
        {R"({"info":{"name":1,"uid":"2"},"path":1})", wrongKind("string", "int", "name")},
        {R"({"info":{"name":"1","uid":"2"}})", missing("path")},
        {R"({"info":{"name":"1","uid":"2"},"path":1})", wrongKind("string", "int", "path")},
        {good + ",{}", missing("info")},
    };
    for (const auto& [element, expected] : cases)
        EXPECT_EQ(outcome(projects(element)), expected) << element;
}

TEST(ConfigFile, TakesOneKindForEachMember) {
    const struct {
        const char* name;
        const char* text;
    } kinds[] = {{"object", "{}"}, {"array", "[]"}, {"string", "\"\""}, {"bool", "false"},
                 {"int", "0"},     {"real", "0.0"}, {"null", "null"}};
    for (const auto& [name, text] : kinds) {
        for (const char* member : {"uid", "name", "path"}) {
            EXPECT_EQ(outcome(projectWith(member, text)), name == std::string("string")
                                                              ? "loaded 1"
                                                              : wrongKind("string", name, member));
        }
        EXPECT_EQ(outcome(projectWith("info", text)), name == std::string("object")
                                                          ? missing("uid")
                                                          : wrongKind("object", name, "info"));
    }
}

TEST(ConfigFile, ThatEndsInsideAStringThrowsAndIsKept) {
    const Configuration configuration;
    configuration.write("{\"projects");
    EXPECT_THROW(static_cast<void>(configuration.load()), std::length_error);
    EXPECT_EQ(configuration.bytes(), "{\"projects");
}

TEST(ConfigFile, IsRefusedWhenItCannotBeRead) {
    const Configuration configuration;
    fs::create_directory(configuration.file());
    const auto config = configuration.load();
    ASSERT_FALSE(config.hasValue());
    EXPECT_NE(config.error().message.toNarrow().find(configuration.file().string()),
              std::string::npos);
}

TEST(ConfigFile, MayBeHostile) {
    const std::string deep = std::string(200'000, '[') + std::string(200'000, ']');
    EXPECT_EQ(outcome(projects(deep)), notAnObject("array"));
    EXPECT_EQ(outcome(projectWith("name", deep)), wrongKind("string", "array", "name"));
    EXPECT_EQ(outcome(std::string(1'000'000, '[')), notJson);
    std::string repeated = good;
    for (int i = 0; i < 20'000; ++i)
        repeated += "," + good;
    EXPECT_EQ(outcome(projects(repeated)), "loaded 1");
}

TEST(ConfigFile, KeepsTextsOfEveryKind) {
    const Configuration configuration;
    const OdString odd(std::wstring(L"/none/\0\n\"\\\u2028", 11) + wchar_t{0xDCFF} +
                       wchar_t{0xD800});
    configuration.loaded()->write().data.write()[odd] = {odd, odd};
    const auto config = configuration.loaded();
    ASSERT_EQ(config->readProjects().size(), 1U);
    EXPECT_EQ(config->readProjects().begin()->first, odd);
    EXPECT_EQ(config->readProjects().begin()->second, (common::ProjectInfo{odd, odd}));
}

}  // namespace
