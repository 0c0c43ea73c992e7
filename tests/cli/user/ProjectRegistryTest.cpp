#include <tests/cli/Program.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace {

using qrv_test::contentsOf;
using qrv_test::Outcome;
using qrv_test::runQrv;
using qrv_test::runShell;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

/// Where the registry is, by the environment. Each test has a home of its own.
class ConfigurationFolder : public testing::Test {
protected:
    ConfigurationFolder() { EXPECT_EQ(runQrv(home.path(), {"init", "Anbau"}).status, 0); }

    /// Registers a project and gives the paths of all that is new in the home.
    std::vector<std::string> filesAfterAdding(const std::string& variables) const {
        const std::string line =
            "unset QRV_CONFIG_DIR XDG_CONFIG_HOME HOME; " + variables + " \"$QRV\" projects add";
        EXPECT_EQ(runShell(home / "Anbau", line).status, 0);
        std::vector<std::string> paths;
        for (const auto& [file, contents] : contentsOf(home.path()))
            if (file.ends_with("directories.state"))
                paths.push_back(file);
        return paths;
    }

    const TemporaryFolder home;
    const std::string path = home.path();
};

TEST_F(ConfigurationFolder, IsTheProgramsOwnVariableFirst) {
    EXPECT_THAT(filesAfterAdding("QRV_CONFIG_DIR='" + path + "/own' XDG_CONFIG_HOME='" + path +
                                 "/xdg' HOME='" + path + "'"),
                testing::ElementsAre("own/directories.state"));
}

TEST_F(ConfigurationFolder, IsTakenFromTheCurrentOneWhereTheProgramsVariableIsRelative) {
    EXPECT_THAT(filesAfterAdding("QRV_CONFIG_DIR=own HOME='" + path + "'"),
                testing::ElementsAre("Anbau/own/directories.state"));
}

TEST_F(ConfigurationFolder, LiesInTheDesktopsOneThen) {
    EXPECT_THAT(
        filesAfterAdding("QRV_CONFIG_DIR= XDG_CONFIG_HOME='" + path + "/xdg' HOME='" + path + "'"),
        testing::ElementsAre("xdg/qrv/directories.state"));
}

TEST_F(ConfigurationFolder, LiesInTheHomeAtLast) {
    EXPECT_THAT(filesAfterAdding("HOME='" + path + "'"),
                testing::ElementsAre(".config/qrv/directories.state"));
}

TEST_F(ConfigurationFolder, IsNotTakenFromARelativeOrEmptyOneOfTheDesktop) {
    for (const std::string folder : {"xdg", ""})
        EXPECT_THAT(filesAfterAdding("XDG_CONFIG_HOME=" + folder + " HOME='" + path + "'"),
                    testing::ElementsAre(".config/qrv/directories.state"));
}

TEST_F(ConfigurationFolder, IsUnknownWithoutAnyOfThem) {
    EXPECT_EQ(runShell(home.path(), "unset QRV_CONFIG_DIR XDG_CONFIG_HOME HOME; \"$QRV\" projects"),
              (Outcome{1, "",
                       "qrv: The folder of your configuration is unknown: neither QRV_CONFIG_DIR "
                       "nor HOME is set\n"}));
}

// A home of "/", as services have it, was no valid path to the program: the root did not count as a
// folder in which something may be made.
TEST_F(ConfigurationFolder, MayLieInAHomeThatIsTheRoot) {
    const std::string asNobody =
        geteuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups " : "";
    EXPECT_EQ(runShell("/", "unset QRV_CONFIG_DIR XDG_CONFIG_HOME; HOME=/ " + asNobody +
                                "\"$QRV\" projects"),
              (Outcome{1, "",
                       "qrv: The registry of projects '/.config/qrv/directories.state' cannot be "
                       "read: The directory /.config/qrv is not writable.\n"}));
}

TEST_F(ConfigurationFolder, ThatCannotBeMadeIsAFailure) {
    writeFile(home / "file", "");
    EXPECT_EQ(runQrv(home.path(), {"projects"}, {{"QRV_CONFIG_DIR", path + "/file/own"}}),
              (Outcome{1, "",
                       "qrv: The registry of projects '" + path +
                           "/file/own/directories.state' cannot be read: The directory " + path +
                           "/file/own is not writable.\n"}));
}

}  // namespace
