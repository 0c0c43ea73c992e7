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
using testing::IsEmpty;

/// A folder for projects, and a registry.
class ProjectsCommand : public testing::Test {
protected:
    Outcome qrv(std::vector<std::string> arguments) const {
        return runQrv(folder.path(), std::move(arguments), environment);
    }
    /// Makes a repository that is not registered.
    void makeProject(const std::string& name) const {
        EXPECT_EQ(runQrv(folder.path(), {"init", name}).status, 0);
    }
    Outcome registered(const std::string& below, const std::string& name) const {
        return {0, "Registered '" + path + below + "' as '" + name + "'\n", ""};
    }
    Outcome removed(const std::string& below) const {
        return {0, "Removed '" + path + below + "' from your registry of projects\n", ""};
    }
    static Outcome failed(const std::string& message) { return {1, "", "qrv: " + message + "\n"}; }

    const TemporaryFolder folder;
    const TemporaryFolder configuration;
    const std::string path = fs::canonical(folder.path());
    const fs::path file = configuration / "directories.state";
    const Environment environment = {{"QRV_CONFIG_DIR", configuration.path()}};
};

const std::string registryOfAnotherHost = R"({
    "projects_map" : [
        {
            "info" : {
                "name" : "Rathaus \u00DCmbau",
                "uid" : "{1}"
            },
            "path" : "/nowhere/Rathaus"
        },
        {
            "info" : {
                "name" : "a\u001B\n",
                "uid" : "b\n"
            },
            "path" : "/nowhere/a/long path\n"
        },
        {
            "info" : {
                "name" : "Anbau",
                "uid" : ""
            },
            "path" : "/nowhere/Anbau"
        }
    ]
})";

TEST_F(ProjectsCommand, PrintsNothingOfAnEmptyRegistry) {
    EXPECT_EQ(qrv({"projects"}), (Outcome{0, "", ""}));
    EXPECT_EQ(qrv({"projects", "list"}), (Outcome{0, "", ""}));
    EXPECT_EQ(qrv({"projects", "--json"}), (Outcome{0, "[\n]\n", ""}));
    EXPECT_THAT(contentsOf(configuration.path()), IsEmpty());
}

TEST_F(ProjectsCommand, ListsNamesPathsAndUidsInColumns) {
    writeFile(file, registryOfAnotherHost);
    const Outcome expected = {0,
                              "Anbau          /nowhere/Anbau\n"
                              "Rathaus Ümbau  /nowhere/Rathaus          {1}\n"
                              "a\\x1B\\x0A      /nowhere/a/long path\\x0A  b\\x0A\n",
                              ""};
    EXPECT_EQ(qrv({"projects"}), expected);
    EXPECT_EQ(qrv({"projects", "list"}), expected);
    EXPECT_EQ(readFile(file), registryOfAnotherHost);
}

TEST_F(ProjectsCommand, CountsACharacterOfTwoUnitsAsOneColumn) {
    writeFile(file, R"({"projects_map": [
        {"path": "/nowhere/a", "info": {"name": "\uD83D\uDCD0", "uid": ""}},
        {"path": "/nowhere/b", "info": {"name": "bb", "uid": ""}}]})");
    EXPECT_EQ(qrv({"projects"}), (Outcome{0, "\U0001F4D0   /nowhere/a\nbb  /nowhere/b\n", ""}));
}

TEST_F(ProjectsCommand, PrintsJsonWhenAsked) {
    writeFile(file, registryOfAnotherHost);
    const Outcome expected = {0,
                              R"([
    {
        "name" : "Anbau",
        "path" : "/nowhere/Anbau",
        "uid" : ""
    },
    {
        "name" : "Rathaus Ümbau",
        "path" : "/nowhere/Rathaus",
        "uid" : "{1}"
    },
    {
        "name" : "a\u001B\n",
        "path" : "/nowhere/a/long path\n",
        "uid" : "b\n"
    }
]
)",
                              ""};
    EXPECT_EQ(qrv({"projects", "--json"}), expected);
    EXPECT_EQ(qrv({"projects", "list", "--json"}), expected);
}

TEST_F(ProjectsCommand, AddsTheRepositoryThatHoldsTheFolder) {
    makeProject("Anbau");
    fs::create_directories(folder / "Anbau/plans/old");
    EXPECT_EQ(qrv({"projects", "add", "Anbau/plans/old"}), registered("/Anbau", "Anbau"));
    EXPECT_EQ(readFile(file), R"({
    "projects_map" : [
        {
            "info" : {
                "name" : "Anbau",
                "uid" : ""
            },
            "path" : ")" + path + R"(/Anbau"
        }
    ]
})");
    EXPECT_EQ(runQrv(folder / "Anbau", {"projects", "add"}, environment),
              registered("/Anbau", "Anbau"));
    EXPECT_EQ(qrv({"projects"}), (Outcome{0, "Anbau  " + path + "/Anbau\n", ""}));
}

TEST_F(ProjectsCommand, AddsUnderTheProjectsNameOrTheGivenOne) {
    makeProject("a");
    writeFile(folder / "a/.qrv/properties/project_name", "  Rathaus Ümbau \r\n");
    EXPECT_EQ(qrv({"projects", "add", "a"}), registered("/a", "Rathaus Ümbau"));
    EXPECT_EQ(qrv({"projects", "add", "a", "--name", "Town hall"}), registered("/a", "Town hall"));
    EXPECT_EQ(qrv({"projects"}), (Outcome{0, "Town hall  " + path + "/a\n", ""}));
}

TEST_F(ProjectsCommand, PrintsTheAddedAndTheRemovedProjectAsJsonWhenAsked) {
    makeProject("Anbau");
    EXPECT_EQ(qrv({"projects", "add", "Anbau", "--json"}),
              (Outcome{0,
                       "{\n    \"name\" : \"Anbau\",\n    \"path\" : \"" + path +
                           "/Anbau\",\n    \"uid\" : \"\"\n}\n",
                       ""}));
    EXPECT_EQ(qrv({"projects", "remove", "Anbau", "--json"}),
              (Outcome{0,
                       "[\n    {\n        \"name\" : \"Anbau\",\n        \"path\" : \"" + path +
                           "/Anbau\",\n        \"uid\" : \"\"\n    }\n]\n",
                       ""}));
}

TEST_F(ProjectsCommand, KeepsPathAndUidOfAProjectThatIsRegistered) {
    makeProject("Anbau");
    fs::create_directory_symlink("Anbau", folder / "link");
    writeFile(file, R"({"projects_map": [{"path": ")" + path +
                        R"(/link", "info": {"name": "old", "uid": "{7}"}}]})");
    EXPECT_EQ(qrv({"projects", "add", "Anbau"}), registered("/link", "Anbau"));
    EXPECT_EQ(qrv({"projects"}), (Outcome{0, "Anbau  " + path + "/link  {7}\n", ""}));
}

TEST_F(ProjectsCommand, KeepsFoldersApartThatDifferInLetterCase) {
    makeProject("Gehäuse/plan");
    makeProject("Gehäuse/Plan");
    for (const std::string locale : {"C", "C.UTF-8"})
        for (const std::string name : {"plan", "Plan"})
            EXPECT_EQ(runShell(folder.path(), "\"$QRV\" projects add Gehäuse/" + name,
                               {{"QRV_CONFIG_DIR", configuration.path()}, {"LC_ALL", locale}}),
                      registered("/Gehäuse/" + name, name));
    EXPECT_EQ(
        qrv({"projects"}),
        (Outcome{0, "Plan  " + path + "/Gehäuse/Plan\nplan  " + path + "/Gehäuse/plan\n", ""}));
}

TEST_F(ProjectsCommand, AddsFoldersWithHostileNames) {
    const std::string hostile = "\x1B[2J\nline\xFF";
    makeProject(hostile);
    EXPECT_EQ(qrv({"projects", "add", hostile}),
              registered("/\\x1B[2J\\x0Aline\\xFF", "\\x1B[2J\\x0Aline\\xFF"));
    EXPECT_EQ(qrv({"projects", "remove", hostile}), removed("/\\x1B[2J\\x0Aline\\xFF"));
    EXPECT_EQ(qrv({"projects"}), (Outcome{0, "", ""}));
}

TEST_F(ProjectsCommand, AddsNothingOutsideOfARepository) {
    EXPECT_EQ(qrv({"projects", "add"}),
              failed("'" + path +
                     "' is not in a repository, nor is any folder above it one (qrv init makes "
                     "one)"));
    EXPECT_EQ(qrv({"projects", "add", "missing"}),
              failed("'missing' cannot be opened: No such file or directory"));
    EXPECT_THAT(contentsOf(configuration.path()), IsEmpty());
}

TEST_F(ProjectsCommand, RemovesAProjectFromAnyFolderInIt) {
    makeProject("Anbau");
    makeProject("Rathaus");
    fs::create_directories(folder / "Anbau/plans");
    for (const std::string project : {"Anbau", "Rathaus"})
        EXPECT_EQ(qrv({"projects", "add", project}).status, 0);
    EXPECT_EQ(runQrv(folder / "Anbau/plans", {"projects", "remove"}, environment),
              removed("/Anbau"));
    EXPECT_EQ(qrv({"projects", "remove", "Rathaus/"}), removed("/Rathaus"));
    EXPECT_EQ(readFile(file), "{\n}");
    EXPECT_TRUE(fs::is_directory(folder / "Anbau/.qrv"));
}

TEST_F(ProjectsCommand, RemovesAProjectThatNoLongerExists) {
    for (const std::string name : {"first", "second", "third"}) {
        makeProject(name);
        EXPECT_EQ(qrv({"projects", "add", name}).status, 0);
        fs::remove_all(folder / name);
    }
    EXPECT_EQ(qrv({"projects", "remove", "second"}), removed("/second"));
    EXPECT_EQ(runQrv("/", {"projects", "remove", path + "/third"}, environment), removed("/third"));
    EXPECT_EQ(qrv({"projects"}), (Outcome{0, "first  " + path + "/first\n", ""}));
}

TEST_F(ProjectsCommand, RemovesAMissingProjectInTheSpellingThatIsRegistered) {
    fs::create_directory(folder / "disk");
    fs::create_directory_symlink("disk", folder / "link");
    for (const std::string spelling : {"/link/gone", "/disk/gone"}) {
        writeFile(file, R"({"projects_map": [{"path": ")" + path + spelling +
                            R"(", "info": {"name": "gone", "uid": ""}}]})");
        EXPECT_EQ(qrv({"projects", "remove", "link/gone"}), removed(spelling));
    }
}

TEST_F(ProjectsCommand, RemovesAllSpellingsOfAFolder) {
    fs::create_directory(folder / "disk");
    fs::create_directory_symlink("disk", folder / "link");
    writeFile(file, R"({"projects_map": [
        {"path": ")" + path +
                        R"(/disk", "info": {"name": "a", "uid": ""}},
        {"path": ")" + path +
                        R"(/link", "info": {"name": "a", "uid": ""}}]})");
    EXPECT_EQ(qrv({"projects", "remove", "disk"}),
              (Outcome{0, removed("/disk").output + removed("/link").output, ""}));
}

TEST_F(ProjectsCommand, RemovesNothingThatIsNotRegistered) {
    makeProject("Anbau");
    makeProject("Rathaus");
    // In a form that the library would not write.
    writeFile(file, R"({"projects_map": [{"path": ")" + path +
                        R"(/Anbau", "info": {"name": "a", "uid": ""}}]})");
    const auto before = contentsOf(configuration.path());
    for (const std::string name : {"Rathaus", "missing", "missing/Anbau"})
        EXPECT_EQ(qrv({"projects", "remove", name}),
                  failed("'" + path + "/" + name + "' is not in your registry of projects"));
    EXPECT_EQ(qrv({"projects", "remove", ""}), failed("'' cannot be used: Invalid argument"));
    EXPECT_EQ(contentsOf(configuration.path()), before);
}

TEST_F(ProjectsCommand, TellsWhyTheRegistryCannotBeReadAndLeavesIt) {
    struct Case {
        std::string registry;
        std::string message;
    };
    const Case cases[] = {
        {"", "Unable to parse json, please check if syntax is valid"},
        {"[]", "Error: Expected json type 'object', found 'array'"},
        {"{\"projects_map\" : [ {\"path\" : \"", "it ends in the middle of a text"},
        {"{\"projects_map\" : [{}]}", "Unable to find json key 'info'; json key: \"info\""},
    };
    makeProject("Anbau");
    for (const Case& each : cases) {
        writeFile(file, each.registry);
        const Outcome expected = failed("The registry of projects '" + file.string() +
                                        "' cannot be read: " + each.message);
        EXPECT_EQ(qrv({"projects"}), expected);
        EXPECT_EQ(qrv({"projects", "add", "Anbau"}), expected);
        EXPECT_EQ(qrv({"projects", "remove", "Anbau"}), expected);
        EXPECT_EQ(readFile(file), each.registry);
    }
}

TEST_F(ProjectsCommand, TellsWhyTheRegistryCannotBeWritten) {
    makeProject("Anbau");
    EXPECT_EQ(qrv({"projects", "add", "Anbau"}).status, 0);
    const auto before = contentsOf(configuration.path());
    for (const std::string arguments : {"add Anbau", "remove Anbau"})
        EXPECT_EQ(runShell(folder.path(),
                           "{ trap '' XFSZ; ulimit -f 0; \"$QRV\" projects " + arguments +
                               "; echo $?; } 2>&1 | cat",
                           environment),
                  (Outcome{0, "qrv: Error writing to file '" + file.string() + "'\n1\n", ""}));
    EXPECT_EQ(contentsOf(configuration.path()), before);
}

}  // namespace
