#include <tests/cli/commands/HistoryProject.h>

#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv_test::contentsOf;
using qrv_test::Environment;
using qrv_test::HistoryProject;
using qrv_test::Outcome;
using qrv_test::readFile;
using qrv_test::runQrv;
using qrv_test::TemporaryFolder;

constexpr uid_t nobody = 65534;

void give(const fs::path& path, uid_t user) {
    ASSERT_EQ(::chown(path.c_str(), user, static_cast<gid_t>(-1)), 0);
}

/// Only root can make something that belongs to somebody else.
class RepositoryOfSomebodyElse : public testing::Test {
protected:
    void SetUp() override {
        if (::geteuid() != 0)
            GTEST_SKIP() << "needs to be root";
        project.write({{"a.txt", "a"}, {"plans/b.txt", "b"}});
        project.commit("First");
        give(project / ".qrv", nobody);
    }

    Outcome qrv(const std::vector<std::string>& arguments) const {
        return runQrv(project / "plans", arguments, environment);
    }
    std::string refusalOf(const std::string& user) const {
        return "qrv: '" + root + "' belongs to '" + user +
               "', and whoever keeps a repository decides what qrv does with the files in it; if "
               "you trust this one: qrv config trusted '" +
               root + "'\n";
    }

    const HistoryProject project;
    const TemporaryFolder settings;
    const Environment environment = {{"QRV_CONFIG_DIR", settings.text().toNarrow()},
                                     {"QRV_AUTHOR", "ada@office"},
                                     {"SUDO_UID", ""}};
    const std::string root = fs::canonical(project.folder.path());
};

// Symptom: a look at a folder of one's own replaced files in it, as a stranger had wished.
// Cause: a repository in a folder above was believed, whoever had put it there.
TEST_F(RepositoryOfSomebodyElse, IsRefusedByEveryCommandFromAnyFolderInIt) {
    const auto before = contentsOf(project.folder.path());
    const std::vector<std::vector<std::string>> commands = {
        {"status"},
        {"log"},
        {"show"},
        {"diff"},
        {"branch"},
        {"tag"},
        {"verify"},
        {"gc"},
        {"recover"},
        {"add", "--all"},
        {"unstage", "--all"},
        {"commit", "-m", "x"},
        {"restore", "a.txt"},
        {"switch", "-c", "x"},
        {"merge", "master"},
        {"resolve", "a.txt", "--mine"},
        {"files"},
        {"state"},
        {"name"},
        {"name", "x"},
        {"ignore", "list"},
        {"ignore", "add", "x"},
        {"log-note", "x"},
        {"locate", "po:" + std::string(64, '1')},
        {"projects", "add"},
        {"init", ".."}};
    for (const std::vector<std::string>& command : commands)
        EXPECT_EQ(qrv(command), (Outcome{1, "", refusalOf("nobody")})) << command.front();
    EXPECT_EQ(contentsOf(project.folder.path()), before);
}

TEST_F(RepositoryOfSomebodyElse, IsTakenOnceTheSettingsNameIt) {
    EXPECT_EQ(qrv({"config", "trusted", "."}), (Outcome{0, root + "\n", ""}));
    EXPECT_EQ(qrv({"status"}).status, 0);
    EXPECT_EQ(readFile(settings / "settings.json"),
              "{\n    \"trusted\" : [\n        \"" + root + "\"\n    ]\n}\n");
    EXPECT_EQ(qrv({"config", "trusted", "--json"}).output, "[\n    \"" + root + "\"\n]\n");
    EXPECT_THAT(qrv({"config"}).output,
                testing::HasSubstr("\ntrusted " + root + "  (A repository of somebody else)\n"));
    EXPECT_EQ(qrv({"config", "trusted", "..", "--remove"}), (Outcome{0, "", ""}));
    EXPECT_EQ(qrv({"status"}), (Outcome{1, "", refusalOf("nobody")}));
    EXPECT_EQ(
        qrv({"config", "trusted", "..", "--remove"}),
        (Outcome{1, "", "qrv: '" + root + "' is not among the repositories that you trust\n"}));
}

TEST_F(RepositoryOfSomebodyElse, IsNotTrustedForTheSakeOfAFolderAboveOrBelow) {
    qrv({"config", "trusted", "/"});
    qrv({"config", "trusted", root + "-other"});
    EXPECT_EQ(qrv({"status"}).status, 1);
}

TEST_F(RepositoryOfSomebodyElse, IsOneWhoseFolderAloneBelongsToSomebody) {
    give(project / ".qrv", 0);
    EXPECT_EQ(qrv({"status"}).status, 0);
    give(project.folder.path(), 4321);
    EXPECT_EQ(qrv({"status"}), (Outcome{1, "", refusalOf("4321")}));
    const TemporaryFolder empty;
    give(empty.path(), 4321);
    EXPECT_EQ(runQrv(empty.path(), {"init"}, environment).status, 1);
    EXPECT_TRUE(contentsOf(empty.path()).empty());
}

TEST_F(RepositoryOfSomebodyElse, IsOnesOwnForRootThatSudoMade) {
    give(project.folder.path(), nobody);
    Environment called = environment;
    called["SUDO_UID"] = std::to_string(nobody);
    EXPECT_EQ(runQrv(project.folder.path(), {"status"}, called).status, 0);
    for (const char* const other : {"4321", "", "x", "-1", "4295032830"}) {
        called["SUDO_UID"] = other;
        EXPECT_EQ(runQrv(project.folder.path(), {"status"}, called).status, 1) << other;
    }
}

TEST_F(RepositoryOfSomebodyElse, StaysRefusedWhenTheSettingsCannotBeRead) {
    qrv_test::writeFile(settings / "settings.json", R"({"trusted": "/"})");
    const Outcome outcome = qrv({"status"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.messages, testing::HasSubstr("the value of 'trusted' cannot be"));
}

}  // namespace
