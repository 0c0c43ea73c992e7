#include <tests/cli/Program.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using qrv_test::contentsOf;
using qrv_test::Outcome;
using qrv_test::runQrv;
using qrv_test::TemporaryFolder;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string help =
    "Versions a folder of drawings.\n"
    "Usage: qrv [OPTIONS] [SUBCOMMAND]\n"
    "\n"
    "Options:\n"
    "  -h,--help                   Print this help message and exit\n"
    "  --version                   Display program version information and exit\n"
    "\n"
    "Subcommands:\n"
    "  init                        Make a repository in a folder, or complete the one that is "
    "there\n"
    "  files                       List the files that the ignore rules leave\n"
    "  status                      Show the branch, the staged files and the conflicts\n"
    "  state                       Print the repository's state as JSON\n"
    "\n";

TEST(Usage, ListsTheCommandsInTheHelp) {
    const TemporaryFolder folder;
    EXPECT_EQ(runQrv(folder.path(), {"--help"}), (Outcome{0, help, ""}));
}

TEST(Usage, PrintsTheHelpAsAComplaintWithoutArguments) {
    const TemporaryFolder folder;
    EXPECT_EQ(runQrv(folder.path(), {}), (Outcome{2, "", help}));
}

TEST(Usage, TellsTheVersion) {
    const TemporaryFolder folder;
    EXPECT_EQ(runQrv(folder.path(), {"--version"}), (Outcome{0, "qrv " QRV_VERSION "\n", ""}));
}

TEST(Usage, ExplainsEachCommandWithoutCarryingItOut) {
    const TemporaryFolder folder;
    for (const std::string command : {"init", "files", "status", "state"}) {
        const Outcome outcome = runQrv(folder.path(), {command, "--help"});
        EXPECT_EQ(outcome.status, 0) << command;
        EXPECT_THAT(outcome.output, HasSubstr("Usage: qrv " + command + " [OPTIONS] [DIR]\n"));
        EXPECT_EQ(outcome.messages, "") << command;
    }
    EXPECT_THAT(contentsOf(folder.path()), IsEmpty());
}

TEST(Usage, ExplainsTheArgumentsOfInit) {
    const TemporaryFolder folder;
    EXPECT_EQ(runQrv(folder.path(), {"init", "--help"}),
              (Outcome{0,
                       "Make a repository in a folder, or complete the one that is there\n"
                       "Usage: qrv init [OPTIONS] [DIR]\n"
                       "\n"
                       "Positionals:\n"
                       "  DIR TEXT                    The project's folder, made if it is missing "
                       "(default: the current one)\n"
                       "\n"
                       "Options:\n"
                       "  -h,--help                   Print this help message and exit\n"
                       "  --name TEXT                 The project's name\n"
                       "\n",
                       ""}));
}

TEST(Usage, RefusesWrongUsageInOneLineAndDoesNothing) {
    struct Case {
        std::vector<std::string> arguments;
        std::string message;
    };
    const Case cases[] = {
        {{"frobnicate"}, "The following argument was not expected: frobnicate"},
        {{"Init"}, "The following argument was not expected: Init"},
        {{"--json"}, "The following argument was not expected: --json"},
        {{"init", "--what"}, "The following argument was not expected: --what"},
        {{"init", "--name"}, "--name: 1 required TEXT missing"},
        {{"init", "a", "b"}, "The following argument was not expected: b"},
        {{"init", "--name", ""}, "--name: A project's name cannot be empty"},
        {{"init", "--name", "one\ntwo"}, "--name: A project's name must be one line of plain text"},
        {{"init", "--name", "not UTF-8 \xFF"},
         "--name: A project's name must be one line of plain text"},
        {{"init", "--name", "\x1B[31mred"},
         "--name: A project's name must be one line of plain text"},
        {{"files", "--json", "-0"}, "--json excludes -0"},
        {{"state", "--json"}, "The following argument was not expected: --json"},
        {{"status", "a", "b"}, "The following argument was not expected: b"},
        {{"\x1B[31m"}, "The following argument was not expected: \\x1B[31m"},
    };
    const TemporaryFolder folder;
    for (const Case& each : cases)
        EXPECT_EQ(runQrv(folder.path(), each.arguments),
                  (Outcome{2, "", "qrv: " + each.message + " (see qrv --help)\n"}))
            << testing::PrintToString(each.arguments);
    EXPECT_THAT(contentsOf(folder.path()), IsEmpty());
}

TEST(Usage, TakesAFolderThatIsCalledLikeACommand) {
    const TemporaryFolder folder;
    EXPECT_EQ(runQrv(folder.path(), {"init", "files"}).status, 0);
    EXPECT_EQ(runQrv(folder.path(), {"files", "files"}),
              (Outcome{0, ".qrv/properties/ignore\n", ""}));
}

TEST(Usage, TakesAFolderWhoseNameBeginsWithADash) {
    const TemporaryFolder folder;
    EXPECT_EQ(runQrv(folder.path(), {"init", "--", "-x"}).status, 0);
    EXPECT_EQ(runQrv(folder.path(), {"files", "--", "-x"}),
              (Outcome{0, ".qrv/properties/ignore\n", ""}));
}

}  // namespace
