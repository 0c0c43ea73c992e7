#include <tests/cli/Program.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv_test::contentsOf;
using qrv_test::Environment;
using qrv_test::Outcome;
using qrv_test::readFile;
using qrv_test::runQrv;
using qrv_test::runShell;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

/// A repository without a name, in a registry.
class NameCommand : public testing::Test {
protected:
    NameCommand() { EXPECT_EQ(qrv({"init"}).status, 0); }

    Outcome qrv(std::vector<std::string> arguments) const {
        return runQrv(folder.path(), std::move(arguments), environment);
    }
    static Outcome failed(const std::string& message) { return {1, "", "qrv: " + message + "\n"}; }

    const TemporaryFolder folder;
    const TemporaryFolder configuration;
    const std::string path = fs::canonical(folder.path());
    const fs::path file = path + "/.qrv/properties/project_name";
    const Environment environment = {{"QRV_CONFIG_DIR", configuration.path()}};
};

TEST_F(NameCommand, SaysWhenThereIsNone) {
    const Outcome expected =
        failed("The project '" + path + "' has no name (qrv name NEW gives it one)");
    EXPECT_EQ(qrv({"name"}), expected);
    EXPECT_EQ(qrv({"name", "--json"}), expected);
    writeFile(file, " \n");
    EXPECT_EQ(qrv({"name"}), expected);
}

TEST_F(NameCommand, PrintsTheName) {
    writeFile(file, "Anbau „Gehäuse“\r\n");
    EXPECT_EQ(qrv({"name"}), (Outcome{0, "Anbau „Gehäuse“\n", ""}));
    fs::create_directory(folder / "sub");
    EXPECT_EQ(runQrv(folder / "sub", {"name"}), (Outcome{0, "Anbau „Gehäuse“\n", ""}));
}

TEST_F(NameCommand, PrintsJsonWhenAsked) {
    writeFile(file, "An\x1B\nbau\n");
    EXPECT_EQ(qrv({"name", "--json"}), (Outcome{0,
                                                "{\n    \"name\" : \"An\\u001B\\nbau\",\n"
                                                "    \"root\" : \"" +
                                                    path + "\"\n}\n",
                                                ""}));
}

TEST_F(NameCommand, EscapesWhatCouldSteerATerminal) {
    writeFile(file, "An\x1B\nbau\n");
    EXPECT_EQ(qrv({"name"}), (Outcome{0, "An\\x1B\\x0Abau\n", ""}));
}

TEST_F(NameCommand, SetsTheNameAndPrintsIt) {
    EXPECT_EQ(qrv({"name", "Rathaus Ümbau"}), (Outcome{0, "Rathaus Ümbau\n", ""}));
    EXPECT_EQ(readFile(file), "Rathaus Ümbau\n");
    EXPECT_EQ(qrv({"name", "New", "--json"}),
              (Outcome{0, "{\n    \"name\" : \"New\",\n    \"root\" : \"" + path + "\"\n}\n", ""}));
    EXPECT_EQ(readFile(file), "New\n");
}

TEST_F(NameCommand, TakesOverTheNewNameIntoTheRegistry) {
    writeFile(configuration / "directories.state",
              R"({"projects_map": [{"path": ")" + path +
                  R"(", "info": {"name": "old", "uid": "{7}"}}]})");
    EXPECT_EQ(qrv({"name", "new"}).status, 0);
    EXPECT_EQ(qrv({"projects"}), (Outcome{0, "new  " + path + "  {7}\n", ""}));
}

TEST_F(NameCommand, DoesNotRegisterTheProject) {
    EXPECT_EQ(qrv({"projects", "remove"}).status, 0);
    const auto before = contentsOf(configuration.path());
    EXPECT_EQ(qrv({"name", "new"}), (Outcome{0, "new\n", ""}));
    EXPECT_EQ(contentsOf(configuration.path()), before);
}

TEST_F(NameCommand, IsSetEvenWhereTheRegistryCannotBeRead) {
    const fs::path registry = configuration / "directories.state";
    writeFile(registry, "[]");
    EXPECT_EQ(
        qrv({"name", "new"}),
        (Outcome{
            0, "new\n",
            "qrv: Note: your registry of projects stays as it was: The registry of projects '" +
                registry.string() +
                "' cannot be read: Error: Expected json type 'object', found "
                "'array'\n"}));
    EXPECT_EQ(readFile(file), "new\n");
    EXPECT_EQ(readFile(registry), "[]");
}

TEST_F(NameCommand, FailsWhenTheNameCannotBeWritten) {
    fs::create_directory(file);
    EXPECT_EQ(qrv({"name", "new"}), failed("'" + file.string() + "' is not a regular file"));
    EXPECT_EQ(qrv({"projects"}),
              (Outcome{0, fs::path(path).filename().string() + "  " + path + "\n", ""}));
}

// Symptom: on a full disk `qrv name NEW` failed, and the project had no name any more.
// Cause: the file was emptied first and written afterwards.
TEST_F(NameCommand, KeepsTheOldNameWhenThereIsNoRoomForTheNew) {
    EXPECT_EQ(qrv({"name", "old"}).status, 0);
    fs::permissions(file, fs::perms(0640));
    // No file may grow; the pipe to cat is none.
    EXPECT_EQ(runShell(folder.path(),
                       "{ trap '' XFSZ; ulimit -f 0; \"$QRV\" name new; echo $?; } 2>&1 | cat"),
              (Outcome{0,
                       "qrv: '" + path +
                           "/.qrv/properties/project_name' cannot be written: File too "
                           "large\n1\n",
                       ""}));
    EXPECT_EQ(readFile(file), "old\n");
    EXPECT_THAT(qrv_test::listTree(file.parent_path()),
                testing::ElementsAre("ignore", "project_name"));
    EXPECT_EQ(qrv({"name", "new"}).status, 0);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
}

TEST_F(NameCommand, FailsOutsideOfARepository) {
    const TemporaryFolder outside;
    const std::string message =
        "'" + fs::canonical(outside.path()).string() +
        "' is not in a repository, nor is any folder above it one (qrv init makes one)";
    EXPECT_EQ(runQrv(outside.path(), {"name"}), failed(message));
    EXPECT_EQ(runQrv(outside.path(), {"name", "new"}), failed(message));
}

}  // namespace
