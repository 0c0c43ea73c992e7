#include <tests/cli/Program.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using qrv_test::contentsOf;
using qrv_test::Outcome;
using qrv_test::runQrv;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string help =
    "Versions a folder of drawings.\n"
    "Usage: qrv [OPTIONS] [COMMAND]\n"
    "\n"
    "Options:\n"
    "  -h,--help                   Print this help message and exit\n"
    "  --version                   Display program version information and exit\n"
    "  -C DIR                      Work as if started in the folder DIR\n"
    "\n"
    "Commands:\n"
    "  init                        Make a repository in a folder, or complete the one that is "
    "there\n"
    "  files                       List the files that the ignore rules leave\n"
    "  status                      Show the branch, what has changed and what is staged\n"
    "  add                         Stage changed files for the next commit\n"
    "  unstage                     Take files off the stage; they stay as they are\n"
    "  commit                      Keep the staged files as a commit\n"
    "  restore                     Bring back files as they were in a commit\n"
    "  switch                      Go to another branch, or begin one\n"
    "  merge                       Merge another branch into the current one\n"
    "  resolve                     Settle a conflict of a merge\n"
    "  ignore                      List, test or add the rules for files that are left out\n"
    "  verify                      Check that everything that was kept is there and whole\n"
    "  recover                     Finish or take back what was interrupted, or mend the history\n"
    "  gc                          Make the repository smaller; nothing that a commit names is "
    "lost\n"
    "  log                         List the commits, newest first\n"
    "  show                        Show a commit and what it changed\n"
    "  diff                        Compare the working files and commits\n"
    "  branch                      List, make or delete branches\n"
    "  tag                         List, make or delete tags\n"
    "  state                       Print the repository's state as JSON\n"
    "  name                        Print or set the project's name\n"
    "  projects                    List, add or remove the projects in your registry\n"
    "  config                      Print or change your settings\n"
    "  log-note                    Write a line into the activity log\n"
    "  locate                      Tell what a storage URL names and where that is kept\n"
    "  convert                     Read a record of the server and print it as JSON\n"
    "  completion                  Print the script that completes commands in a shell\n"
    "  manual                      Print a manual page in the form of man\n"
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
    struct Case {
        std::vector<std::string> command;
        std::string arguments;
    };
    const Case cases[] = {
        {{"init"}, "[DIR]"},
        {{"files"}, "[DIR]"},
        {{"status"}, "[DIR]"},
        {{"state"}, "[DIR]"},
        {{"name"}, "[NEW]"},
        {{"projects"}, "[COMMAND]"},
        {{"projects", "list"}, ""},
        {{"projects", "add"}, "[DIR]"},
        {{"projects", "remove"}, "[DIR]"},
        {{"log-note"}, "TEXT"},
        {{"locate"}, "URL"},
        {{"convert"}, "RECORD [FILE]"},
        {{"add"}, "[PATH...]"},
        {{"unstage"}, "[PATH...]"},
        {{"commit"}, ""},
        {{"restore"}, "PATH..."},
        {{"switch"}, "BRANCH [COMMIT]"},
        {{"merge"}, "[COMMIT]"},
        {{"resolve"}, "PATH"},
        {{"verify"}, ""},
        {{"recover"}, ""},
        {{"gc"}, ""},
        {{"completion"}, "SHELL"},
        {{"manual"}, "[COMMAND]"},
    };
    const TemporaryFolder folder;
    for (const Case& each : cases) {
        std::vector<std::string> arguments = each.command;
        arguments.emplace_back("--help");
        std::string usage = "Usage: qrv";
        for (const std::string& word : each.command)
            usage += " " + word;
        usage += " [OPTIONS]" + (each.arguments.empty() ? "" : " " + each.arguments) + "\n";
        const Outcome outcome = runQrv(folder.path(), arguments);
        EXPECT_EQ(outcome.status, 0) << usage;
        EXPECT_THAT(outcome.output, HasSubstr(usage));
        EXPECT_EQ(outcome.messages, "") << usage;
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
                       "Arguments:\n"
                       "  DIR                         The project's folder, made if it is missing "
                       "(default: the current one)\n"
                       "\n"
                       "Options:\n"
                       "  -h,--help                   Print this help message and exit\n"
                       "  --name TEXT                 The project's name\n"
                       "  --cad-ignores               Also ignore autosaves, backups, plot logs, "
                       "lock files and temporary files\n"
                       "  --json                      Print the result as JSON\n"
                       "\n",
                       ""}));
}

TEST(Usage, RefusesWrongUsageInOneLineAndDoesNothing) {
    struct Case {
        std::vector<std::string> arguments;
        std::string message;
    };
    const Case cases[] = {
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
        {{"status", "-C", "."}, "The following argument was not expected: -C"},
        {{"-C"}, "-C: 1 required DIR missing"},
        {{"name", ""}, "NEW: A project's name cannot be empty"},
        {{"name", " \u00A0"}, "NEW: A project's name cannot be empty"},
        {{"name", "one\ntwo"}, "NEW: A project's name must be one line of plain text"},
        {{"name", "a", "b"}, "The following argument was not expected: b"},
        {{"projects", "frobnicate"}, "The following argument was not expected: frobnicate"},
        {{"projects", "list", "add"}, "The following argument was not expected: add"},
        {{"projects", "list", "a"}, "The following argument was not expected: a"},
        {{"projects", "add", "--name", ""}, "--name: A project's name cannot be empty"},
        {{"projects", "add", "--name", "\x1B"},
         "--name: A project's name must be one line of plain text"},
        {{"projects", "remove", "--name", "a"}, "The following argument was not expected: --name"},
        {{"log-note"}, "TEXT is required"},
        {{"log-note", "a", "b"}, "The following argument was not expected: b"},
        {{"locate"}, "URL is required"},
        {{"convert"}, "RECORD is required"},
        {{"convert", "fetch", "a", "b"}, "The following argument was not expected: b"},
    };
    const TemporaryFolder folder;
    for (const Case& each : cases)
        EXPECT_EQ(runQrv(folder.path(), each.arguments),
                  (Outcome{2, "", "qrv: " + each.message + " (see qrv --help)\n"}))
            << testing::PrintToString(each.arguments);
    EXPECT_THAT(contentsOf(folder.path()), IsEmpty());
}

TEST(Usage, AsksWhetherAnotherCommandWasMeant) {
    struct Case {
        std::vector<std::string> arguments;
        std::string message;
    };
    const Case cases[] = {
        {{"frobnicate"}, "'frobnicate' is not a command (see qrv --help)"},
        {{"comit", "-m", "x"}, "'comit' is not a command (see qrv --help); did you mean 'commit'?"},
        {{"-C", ".", "Init"}, "'Init' is not a command (see qrv --help); did you mean 'init'?"},
        {{"\x1B[31m"}, "'\\x1B[31m' is not a command (see qrv --help)"},
    };
    const TemporaryFolder folder;
    for (const Case& each : cases)
        EXPECT_EQ(runQrv(folder.path(), each.arguments),
                  (Outcome{2, "", "qrv: " + each.message + "\n"}));
    EXPECT_THAT(contentsOf(folder.path()), IsEmpty());
}

TEST(Usage, NeedsOneOfTheOptionsThatExcludeEachOther) {
    struct Case {
        std::vector<std::string> arguments;
        std::string message;
    };
    const Case cases[] = {
        {{"add"}, "PATH or --all is required"},
        {{"add", "--all", "a"}, "PATH excludes --all"},
        {{"unstage"}, "PATH or --all is required"},
        {{"merge"}, "COMMIT or --abort is required"},
        {{"resolve", "a"}, "--mine, --theirs or --merged is required"},
        {{"resolve", "a", "--mine", "--merged"}, "--mine excludes --merged"},
    };
    const TemporaryFolder folder;
    for (const Case& each : cases)
        EXPECT_EQ(runQrv(folder.path(), each.arguments),
                  (Outcome{2, "", "qrv: " + each.message + " (see qrv --help)\n"}));
}

TEST(Usage, WorksAsIfStartedInTheGivenFolder) {
    const TemporaryFolder folder;
    EXPECT_EQ(runQrv("/", {"-C", folder.path(), "init", "sub/project", "--name", "Anbau"}).status,
              0);
    EXPECT_EQ(runQrv(folder.path(), {"-C", "sub/project", "name"}), (Outcome{0, "Anbau\n", ""}));
    EXPECT_EQ(runQrv(folder.path(), {"-C", "sub", "files", "project"}),
              (Outcome{0, ".qrv/properties/ignore\n.qrv/properties/project_name\n", ""}));
}

TEST(Usage, FailsWhereTheGivenFolderCannotBeEntered) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "");
    EXPECT_EQ(
        runQrv(folder.path(), {"-C", "missing\x1B", "init"}),
        (Outcome{1, "", "qrv: 'missing\\x1B' cannot be opened: No such file or directory\n"}));
    EXPECT_EQ(runQrv(folder.path(), {"-C", "file", "init"}),
              (Outcome{1, "", "qrv: 'file' cannot be opened: Not a directory\n"}));
    EXPECT_EQ(runQrv(folder.path(), {"-C", "", "init"}),
              (Outcome{1, "", "qrv: '' cannot be opened: No such file or directory\n"}));
}

TEST(Usage, PrintsTheHelpWithoutACommandInTheGivenFolderToo) {
    const TemporaryFolder folder;
    EXPECT_EQ(runQrv(folder.path(), {"-C", "missing"}), (Outcome{2, "", help}));
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
