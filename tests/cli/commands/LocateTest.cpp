#include <tests/cli/Program.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::contentsOf;
using qrv_test::Outcome;
using qrv_test::runQrv;
using qrv_test::TemporaryFolder;

const std::string digest = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";

/// A repository.
class LocateCommand : public testing::Test {
protected:
    LocateCommand() { EXPECT_EQ(runQrv(folder.path(), {"init"}).status, 0); }

    const TemporaryFolder folder;
    const std::string metadata = fs::canonical(folder.path()).string() + "/.qrv";
};

TEST_F(LocateCommand, TellsWhereADrawingIsKept) {
    EXPECT_EQ(
        runQrv(folder.path(), {"locate", "tf:ground floor#12"}),
        (Outcome{0, "Type: drawing\nRevision: 12\nPath: " + metadata + "/tf/ground floor.tf\n",
                 ""}));
}

TEST_F(LocateCommand, TellsWhereAnotherFileIsKept) {
    EXPECT_EQ(runQrv(folder / ".qrv", {"locate", "po:" + digest}),
              (Outcome{0,
                       "Type: plain file\nRevision: " + digest + "\nPath: " + metadata +
                           "/objects/" + digest + "\n",
                       ""}));
}

TEST_F(LocateCommand, PrintsJsonWhenAsked) {
    EXPECT_EQ(runQrv(folder.path(), {"locate", "--json", "tf:\x1B\xC3\xA4#a#1"}),
              (Outcome{0,
                       "{\n    \"path\" : \"" + metadata +
                           "/tf/\\u001Bä.tf\",\n    \"revision\" : \"1\",\n"
                           "    \"type\" : \"drawing\"\n}\n",
                       ""}));
    EXPECT_EQ(
        runQrv(folder.path(), {"locate", "po:" + digest, "--json"}),
        (Outcome{0,
                 "{\n    \"path\" : \"" + metadata + "/objects/" + digest +
                     "\",\n    \"revision\" : \"" + digest + "\",\n    \"type\" : \"plain\"\n}\n",
                 ""}));
}

TEST_F(LocateCommand, EscapesWhatCouldSteerATerminal) {
    EXPECT_EQ(
        runQrv(folder.path(), {"locate", "tf:\x1B#\x1B"}),
        (Outcome{0, "Type: drawing\nRevision: \\x1B\nPath: " + metadata + "/tf/\\x1B.tf\n", ""}));
}

TEST_F(LocateCommand, FailsForWhatIsNoStorageUrl) {
    struct Case {
        std::string url;
        std::string message;
    };
    const Case cases[] = {
        {"", "Internal error, invalid url occurred: "},
        {"plan.dwg", "Internal error, invalid url occurred: plan.dwg"},
        {"tf:plan", "Internal error, invalid url occurred: tf:plan"},
        {"tf:a\r#1", "Internal error, invalid url occurred: tf:a\\x0D#1"},
        {"tf#7", "invalid url: tf#7"},
    };
    for (const Case& each : cases)
        for (const bool asJson : {false, true})
            EXPECT_EQ(asJson ? runQrv(folder.path(), {"locate", each.url, "--json"})
                             : runQrv(folder.path(), {"locate", each.url}),
                      (Outcome{1, "", "qrv: " + each.message + "\n"}));
}

TEST_F(LocateCommand, TouchesNothing) {
    const auto before = contentsOf(folder.path());
    EXPECT_EQ(runQrv(folder.path(), {"locate", "tf:plan#1"}).status, 0);
    EXPECT_EQ(contentsOf(folder.path()), before);
}

TEST(LocateCommandOutside, OfARepositoryFails) {
    const TemporaryFolder folder;
    EXPECT_EQ(runQrv(folder.path(), {"locate", "tf:plan#1"}),
              (Outcome{1, "",
                       "qrv: '" + fs::canonical(folder.path()).string() +
                           "' is not in a repository, nor is any folder above it one (qrv init "
                           "makes one)\n"}));
}

}  // namespace
