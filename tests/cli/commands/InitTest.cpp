#include <tests/cli/Program.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv_test::contentsOf;
using qrv_test::Outcome;
using qrv_test::readFile;
using qrv_test::runQrv;
using qrv_test::runShell;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;
using testing::IsEmpty;

using Contents = std::map<std::string, std::string>;

const std::string ignoreText =
    "#The following expressions define which files should be ignored.\n"
    "#It is possible to add your own. To do so start a new line.\n"
    "#Syntax: \n"
    "#    lines starting with a # are a comment and will not be parsed\n"
    "#    a * will be parsed as multiples of any character\n"
    "#    a ? will be parsed as any one character\n"
    "#    characters between [] will be treated as any of\n"
    "#        e.g. *[-+]*.txt will be treated as, a couple of characters,\n"
    "#        then one + or -, a couple of characters and eventually ending in .txt\n"
    "# If you want a more expressive syntax you can also use regular expressions.\n"
    "#    lines starting with a ^ will be parsed as a regular expression\n"
    "*.bak\n*.dwl\n*.dwl2\n";
const std::string stateText = "{\n    \"head\" : {\n        \"reference\" : \"master\"\n    }\n}";

Contents newRepository() {
    return {{".qrv/", ""},
            {".qrv/properties/", ""},
            {".qrv/properties/ignore", ignoreText},
            {".qrv/qrv.state", stateText}};
}

/// A temporary folder and its path as the program reports it.
class Init : public testing::Test {
protected:
    const TemporaryFolder folder;
    const std::string path = fs::canonical(folder.path());

    Outcome made(const std::string& below = "") const {
        return {0, "Made a repository in '" + path + below + "'\n", ""};
    }
    Outcome alreadyThere() const { return {0, "'" + path + "' is already a repository\n", ""}; }
    Outcome failed(const std::string& message) const { return {1, "", "qrv: " + message + "\n"}; }
};

TEST_F(Init, MakesAWholeRepositoryInTheCurrentFolder) {
    EXPECT_EQ(runQrv(folder.path(), {"init"}), made());
    EXPECT_EQ(contentsOf(folder.path()), newRepository());
}

TEST_F(Init, TellsAProgramWhatItMade) {
    const auto answer = [this](const std::string& made, const std::string& name,
                               const std::string& rules) {
        return Outcome{0,
                       "{\n    \"ignoreRulesAdded\" : " + rules + ",\n    \"made\" : " + made +
                           ",\n    \"name\" : \"" + name + "\",\n    \"root\" : \"" + path +
                           "\"\n}\n",
                       ""};
    };
    EXPECT_EQ(runQrv(folder.path(), {"init", "--json", "--name", "Annex"}),
              answer("true", "Annex", "0"));
    EXPECT_EQ(runQrv(folder.path(), {"init", "--json"}), answer("false", "Annex", "0"));
    EXPECT_EQ(runQrv(folder.path(), {"init", "--json", "--cad-ignores"}),
              answer("false", "Annex", "16"));
}

TEST_F(Init, MakesTheFolderAndThoseAboveIt) {
    EXPECT_EQ(runQrv(folder.path(), {"init", "a/b/"}), made("/a/b"));
    EXPECT_EQ(contentsOf(folder / "a/b"), newRepository());
}

TEST_F(Init, LeavesTheProjectsFilesAlone) {
    writeFile(folder / "plan.dxf", "0\nEOF\n");
    EXPECT_EQ(runQrv(folder.path(), {"init"}), made());
    Contents expected = newRepository();
    expected["plan.dxf"] = "0\nEOF\n";
    EXPECT_EQ(contentsOf(folder.path()), expected);
}

TEST_F(Init, WritesTheName) {
    EXPECT_EQ(runQrv(folder.path(), {"init", "--name", "Anbau \u201EGehäuse\u201C"}), made());
    EXPECT_EQ(readFile(folder / ".qrv/properties/project_name"), "Anbau \u201EGehäuse\u201C\n");
}

TEST_F(Init, ChangesNothingInARepositoryThatIsWhole) {
    writeFile(folder / ".qrv/qrv.state", "whatever");
    writeFile(folder / ".qrv/properties/ignore", "*.tmp");
    writeFile(folder / ".qrv/properties/project_name", "old");
    const Contents before = contentsOf(folder.path());
    EXPECT_EQ(runQrv(folder.path(), {"init"}), alreadyThere());
    EXPECT_EQ(contentsOf(folder.path()), before);
}

TEST_F(Init, ReplacesOnlyTheNameOfARepository) {
    writeFile(folder / ".qrv/qrv.state", "whatever");
    writeFile(folder / ".qrv/properties/ignore", "*.tmp");
    writeFile(folder / ".qrv/properties/project_name", "a longer old name");
    Contents expected = contentsOf(folder.path());
    expected[".qrv/properties/project_name"] = "new\n";
    EXPECT_EQ(runQrv(folder.path(), {"init", "--name", "new"}), alreadyThere());
    EXPECT_EQ(contentsOf(folder.path()), expected);
}

TEST_F(Init, CompletesARepositoryAndSaysWhenItsStateWasLost) {
    fs::create_directory(folder / ".qrv");
    EXPECT_EQ(
        runQrv(folder.path(), {"init"}),
        (Outcome{0, alreadyThere().output,
                 "qrv: Note: there was no state file; a new one names the branch 'master'\n"}));
    EXPECT_EQ(contentsOf(folder.path()), newRepository());
}

TEST_F(Init, CompletesARepositoryWithoutAnIgnoreFile) {
    writeFile(folder / ".qrv/qrv.state", stateText);
    EXPECT_EQ(runQrv(folder.path(), {"init"}), alreadyThere());
    EXPECT_EQ(contentsOf(folder.path()), newRepository());
}

TEST_F(Init, MakesARepositoryInsideAnotherAndSaysSo) {
    EXPECT_EQ(runQrv(folder.path(), {"init"}), made());
    Outcome expected = made("/sub/inner");
    expected.messages =
        "qrv: Note: the repository '" + path + "' above it goes on listing its files\n";
    EXPECT_EQ(runQrv(folder.path(), {"init", "sub/inner"}), expected);
    EXPECT_EQ(contentsOf(folder / "sub/inner"), newRepository());
}

TEST_F(Init, RefusesAFolderInsideTheMetadata) {
    EXPECT_EQ(runQrv(folder.path(), {"init"}), made());
    const Contents before = contentsOf(folder.path());
    EXPECT_EQ(runQrv(folder / ".qrv/properties", {"init"}),
              failed("'" + path + "/.qrv/properties' lies in the metadata folder of a repository"));
    EXPECT_EQ(runQrv(folder.path(), {"init", ".qrv/new"}),
              failed("'" + path + "/.qrv/new' lies in the metadata folder of a repository"));
    EXPECT_EQ(contentsOf(folder.path()), before);
}

TEST_F(Init, RefusesAFile) {
    writeFile(folder / "plan.dxf", "0\nEOF\n");
    const Contents before = contentsOf(folder.path());
    EXPECT_EQ(runQrv(folder.path(), {"init", "plan.dxf"}),
              failed("'" + path + "/plan.dxf' is not a folder"));
    EXPECT_EQ(runQrv(folder.path(), {"init", "plan.dxf/sub"}),
              failed("Not able to create the version control folder: " + path + "/plan.dxf/sub"));
    EXPECT_EQ(contentsOf(folder.path()), before);
}

TEST_F(Init, RefusesAFolderThatCannotBeMade) {
    const std::string tooLong(300, 'x');
    EXPECT_EQ(runQrv(folder.path(), {"init", tooLong}).status, 1);
    EXPECT_EQ(runQrv(folder.path(), {"init", ""}), failed("'' cannot be used: Invalid argument"));
    EXPECT_EQ(runQrv(folder.path(), {"init", "/proc/qrv"}),
              failed("Not able to create the version control folder: /proc/qrv"));
    EXPECT_THAT(contentsOf(folder.path()), IsEmpty());
}

TEST_F(Init, FailsWhereAFileTakesTheMetadataFoldersName) {
    writeFile(folder / ".qrv", "");
    EXPECT_EQ(runQrv(folder.path(), {"init"}), failed("'" + path + "/.qrv' is not a folder"));
    EXPECT_EQ(contentsOf(folder.path()), (Contents{{".qrv", ""}}));
}

TEST_F(Init, FailsWhenTheStateCannotBeWritten) {
    fs::create_directory(folder / ".qrv");
    // No file may grow; the pipe to cat is none.
    EXPECT_EQ(runShell(folder.path(),
                       "{ trap '' XFSZ; ulimit -f 0; \"$QRV\" init; echo $?; } 2>&1 | cat"),
              (Outcome{0, "qrv: Error writing to file '" + path + "/.qrv/qrv.state'\n1\n", ""}));
}

TEST_F(Init, CompletesNoRepositoryThroughALink) {
    const TemporaryFolder elsewhere;
    fs::create_directory_symlink(elsewhere.path(), folder / ".qrv");
    EXPECT_EQ(
        runQrv(folder.path(), {"init", "--name", "x", "--cad-ignores"}),
        failed("'" + path + "/.qrv' is a symbolic link, and in a repository none is followed"));
    EXPECT_THAT(contentsOf(elsewhere.path()), IsEmpty());
}

TEST_F(Init, FailsWhenTheIgnoreFileCannotBeMade) {
    writeFile(folder / ".qrv/qrv.state", stateText);
    writeFile(folder / ".qrv/properties", "");
    const Contents before = contentsOf(folder.path());
    EXPECT_EQ(runQrv(folder.path(), {"init"}),
              failed("'" + path + "/.qrv/properties' is not a folder"));
    EXPECT_EQ(contentsOf(folder.path()), before);
}

TEST_F(Init, FailsWhenTheNameCannotBeWritten) {
    const Outcome expected =
        failed("'" + path + "/.qrv/properties/project_name' is not a regular file");
    EXPECT_EQ(runQrv(folder.path(), {"init"}), made());
    fs::create_directory(folder / ".qrv/properties/project_name");
    EXPECT_EQ(runQrv(folder.path(), {"init", "--name", "new"}), expected);
}

TEST_F(Init, FailsWhenTheDiskHasNoRoomForTheName) {
    EXPECT_EQ(runQrv(folder.path(), {"init"}), made());
    // No file may grow; the pipe to cat is none.
    EXPECT_EQ(
        runShell(folder.path(),
                 "{ trap '' XFSZ; ulimit -f 0; \"$QRV\" init --name new; echo $?; } 2>&1 | cat"),
        (Outcome{0,
                 "qrv: '" + path +
                     "/.qrv/properties/project_name' cannot be written: File too large\n1\n",
                 ""}));
}

TEST_F(Init, WorksInFoldersWithSpecialNames) {
    for (const std::string name :
         {"zwei Wörter", "\u56F3\u9762 \U0001F4D0", "back\\slash", "'quotes\"", "%ls%n$(x)"}) {
        EXPECT_EQ(runQrv(folder.path(), {"init", name}), made("/" + name));
        EXPECT_EQ(contentsOf(folder / name), newRepository()) << name;
    }
}

TEST_F(Init, ShowsAHostileNameEscaped) {
    const std::string hostile = "\x1B[2J\nqrv: all is well\xFF";
    const std::string shown = "\\x1B[2J\\x0Aqrv: all is well\\xFF";
    EXPECT_EQ(runQrv(folder.path(), {"init", hostile}), made("/" + shown));
    EXPECT_EQ(contentsOf(folder / hostile), newRepository());
}

TEST_F(Init, ResolvesLinksOnTheWay) {
    fs::create_directories(folder / "disk/projects");
    fs::create_directory_symlink("disk/projects", folder / "link");
    EXPECT_EQ(runQrv(folder.path(), {"init", "link/../new"}), made("/disk/new"));
    EXPECT_EQ(contentsOf(folder / "disk/new"), newRepository());
}

/// A registry of projects beside the folder.
class InitAndTheRegistry : public Init {
protected:
    Outcome qrv(const std::vector<std::string>& arguments) const {
        return runQrv(folder.path(), arguments, {{"QRV_CONFIG_DIR", configuration.path()}});
    }

    const TemporaryFolder configuration;
    const fs::path file = configuration / "directories.state";
};

TEST_F(InitAndTheRegistry, RegistersTheProjectUnderItsName) {
    EXPECT_EQ(qrv({"init", "a", "--name", "Anbau"}), made("/a"));
    EXPECT_EQ(qrv({"init", "b"}), made("/b"));
    EXPECT_EQ(qrv({"projects"}),
              (Outcome{0, "Anbau  " + path + "/a\nb      " + path + "/b\n", ""}));
}

TEST_F(InitAndTheRegistry, RegistersARepositoryThatIsThere) {
    writeFile(folder / ".qrv/qrv.state", stateText);
    writeFile(folder / ".qrv/properties/project_name", "Anbau\n");
    EXPECT_EQ(qrv({"init"}), alreadyThere());
    EXPECT_EQ(qrv({"projects"}), (Outcome{0, "Anbau  " + path + "\n", ""}));
}

TEST_F(InitAndTheRegistry, LeavesAProjectThatIsRegistered) {
    EXPECT_EQ(qrv({"init"}), made());
    EXPECT_EQ(qrv({"projects", "add", "--name", "my own"}).status, 0);
    const Contents before = contentsOf(configuration.path());
    EXPECT_EQ(qrv({"init"}), alreadyThere());
    EXPECT_EQ(contentsOf(configuration.path()), before);
}

TEST_F(InitAndTheRegistry, GivesARegisteredProjectItsNewName) {
    writeFile(file, R"({"projects_map": [{"path": ")" + path +
                        R"(", "info": {"name": "old", "uid": "{7}"}}]})");
    EXPECT_EQ(qrv({"init", "--name", "new"}), made());
    EXPECT_EQ(qrv({"projects"}), (Outcome{0, "new  " + path + "  {7}\n", ""}));
}

TEST_F(InitAndTheRegistry, OnlyNotesThatTheProjectCannotBeRegistered) {
    writeFile(file, "[]");
    Outcome expected = made();
    expected.messages =
        "qrv: Note: your registry of projects stays as it was: The registry of projects '" +
        file.string() + "' cannot be read: Error: Expected json type 'object', found 'array'\n";
    EXPECT_EQ(qrv({"init"}), expected);
    EXPECT_EQ(readFile(file), "[]");
    EXPECT_EQ(contentsOf(folder.path()), newRepository());
}

TEST_F(InitAndTheRegistry, OnlyNotesThatTheRegistryCannotBeWritten) {
    EXPECT_EQ(runQrv(folder.path(), {"init"}), made());
    // No file may grow, but of the repository none needs to; the pipe to cat is none.
    EXPECT_EQ(
        runShell(folder.path(), "{ trap '' XFSZ; ulimit -f 0; \"$QRV\" init 2>&1; echo $?; } | cat",
                 {{"QRV_CONFIG_DIR", configuration.path()}}),
        (Outcome{0,
                 "qrv: Note: your registry of projects stays as it was: Error writing to file '" +
                     file.string() + "'\n" + alreadyThere().output + "0\n",
                 ""}));
    EXPECT_THAT(contentsOf(configuration.path()), IsEmpty());
}

}  // namespace
