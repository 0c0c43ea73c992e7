#include <tests/cli/Program.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv_test::Outcome;
using qrv_test::readFile;
using qrv_test::runQrv;
using qrv_test::writeFile;

class ConfigCommand : public testing::Test {
protected:
    Outcome config(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "config");
        return runQrv("/", std::move(arguments), {{"QRV_CONFIG_DIR", directory}});
    }

    const qrv_test::TemporaryFolder folder;
    const std::string directory = folder / "new/configuration";
    const std::string file = directory + "/settings.json";
};

TEST_F(ConfigCommand, ListsTheDefaults) {
    EXPECT_EQ(config({}),
              (Outcome{0,
                       "large-commit 1000  (Warn of a commit with more megabytes than this; 0 for "
                       "never)\n"
                       "large-file 100  (Warn of a file with more megabytes than this; 0 for "
                       "never)\n"
                       "shared-folders 1  (Give what is made in a repository that its group may "
                       "write to the permissions of its folder; 0 for those of your own mask)\n",
                       ""}));
    EXPECT_EQ(config({"--json"}),
              (Outcome{0,
                       "{\n    \"large-commit\" : 1000,\n    \"large-file\" : 100,\n    "
                       "\"shared-folders\" : 1,\n    \"trusted\" : [\n    ]\n}\n",
                       ""}));
    EXPECT_FALSE(fs::exists(folder / "new"));
}

TEST_F(ConfigCommand, KeepsAValue) {
    EXPECT_EQ(config({"large-file", "500"}), (Outcome{0, "500\n", ""}));
    EXPECT_EQ(readFile(file), "{\n    \"large-file\" : 500\n}\n");
    EXPECT_EQ(config({"large-file"}), (Outcome{0, "500\n", ""}));
    EXPECT_EQ(config({"large-commit", "--json"}), (Outcome{0, "1000\n", ""}));
}

TEST_F(ConfigCommand, WritesTheFileOfItsDescription) {
    config({"large-file", "500"});
    config({"large-commit", "2000"});
    EXPECT_EQ(readFile(file), readFile(QRV_COMMAND_SAMPLES "/settings.sample"));
}

TEST_F(ConfigCommand, LeavesKeysAloneThatItDoesNotKnow) {
    writeFile(file, R"({"newer": [1, {"a": null}], "large-file": 7})");
    config({"large-commit", "0"});
    EXPECT_EQ(readFile(file), R"({
    "large-commit" : 0,
    "large-file" : 7,
    "newer" : [
        1,
        {
            "a" : null
        }
    ]
}
)");
}

TEST_F(ConfigCommand, RefusesWhatIsNoSettingAndNoValue) {
    EXPECT_EQ(config({"largefile"}),
              (Outcome{1, "",
                       "qrv: There is no setting 'largefile'; there are: large-commit, "
                       "large-file, shared-folders, trusted\n"}));
    for (const char* const value : {"x", "1x", "1.5", "", "1000000001", "99999999999999999999"}) {
        EXPECT_EQ(config({"large-file", value}),
                  (Outcome{1, "",
                           "qrv: '" + std::string(value) +
                               "' is no whole number from 0 to 1000000000\n"}));
    }
    EXPECT_EQ(config({"large-file", "1000000000"}).status, 0);
}

TEST_F(ConfigCommand, RefusesAFileThatItCannotUseAndLeavesIt) {
    const std::string prefix = "qrv: The settings '" + file + "' cannot be read: ";
    for (const auto& [text, cause] : std::vector<std::pair<std::string, std::string>>{
             {"", "it is no JSON object"},
             {"[]", "it is no JSON object"},
             {R"({"large-)", "it ends in the middle of a text"},
             {R"({"large-file": "7"})", "the value of 'large-file' cannot be"},
             {R"({"large-file": -1})", "the value of 'large-file' cannot be"},
             {R"({"large-file": 1000000001})", "the value of 'large-file' cannot be"}}) {
        writeFile(file, text);
        EXPECT_EQ(config({}), (Outcome{1, "", prefix + cause + "\n"})) << text;
    }
    writeFile(file, "[]");
    EXPECT_EQ(config({"large-file", "7"}).status, 1);
    EXPECT_EQ(readFile(file), "[]");
}

// Symptom: a value was written, and the command failed all the same.
// Cause: only after that it looked at the other values, one of which could not be.
TEST_F(ConfigCommand, ChangesNothingBesideAValueThatCannotBe) {
    const std::string text = R"({"large-file": "much"})";
    writeFile(file, text);
    EXPECT_EQ(config({"large-commit", "7"}),
              (Outcome{1, "",
                       "qrv: The settings '" + file +
                           "' cannot be read: the value of 'large-file' cannot be\n"}));
    EXPECT_EQ(readFile(file), text);
    EXPECT_EQ(config({"large-file", "7"}), (Outcome{0, "7\n", ""}));
    EXPECT_EQ(config({"large-commit", "8"}), (Outcome{0, "8\n", ""}));
}

TEST_F(ConfigCommand, FailsWhereTheFileCannotBeWritten) {
    writeFile(folder / "new", "a file where a folder is needed");
    EXPECT_EQ(config({"large-file", "7"}),
              (Outcome{1, "", "qrv: The settings '" + file + "' cannot be written\n"}));
}

}  // namespace
