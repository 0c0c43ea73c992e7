#include <tests/cli/commands/HistoryProject.h>

#include <gmock/gmock.h>

#include <string>

namespace {

using qrv_test::Environment;
using qrv_test::HistoryProject;
using qrv_test::Outcome;
using qrv_test::runShell;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// A repository on whose commands somebody looks through a terminal.
class Terminal : public testing::Test {
protected:
    Terminal() {
        project.write({{"list.csv", "flange;3\n"}});
        project.commit("First");
    }

    /// All that appears on the terminal. Variables of the environment of the test that speak of
    /// colours do not count.
    std::string shown(const std::string& command, const Environment& more = {}) const {
        Environment environment = {
            {"QRV_AUTHOR", "ada@office"}, {"NO_COLOR", ""}, {"TERM", "xterm"}};
        for (const auto& [name, value] : more)
            environment[name] = value;
        const Outcome outcome =
            runShell(project.folder.path(),
                     "script --quiet --return --command '" + command + "' /dev/null </dev/null",
                     environment);
        EXPECT_EQ(outcome.status, 0) << outcome;
        return outcome.output;
    }

    const HistoryProject project;
};

TEST_F(Terminal, ShowsTheStatusInColours) {
    project.write({{"list.csv", "flange;4\n"}});
    EXPECT_THAT(shown("$QRV status"),
                AllOf(StartsWith("Branch '\x1B[36mmaster\x1B[0m', commit 1: First\r\n"),
                      HasSubstr("\x1B[1mChanged, not staged (qrv add PATH):\x1B[0m\r\n"),
                      HasSubstr("m  list.csv\r\n")));
}

TEST_F(Terminal, ShowsNoColoursToWhomDoesNotWantThem) {
    EXPECT_THAT(shown("$QRV status", {{"NO_COLOR", "1"}}), Not(HasSubstr("\x1B")));
    EXPECT_THAT(shown("$QRV status", {{"TERM", "dumb"}}), Not(HasSubstr("\x1B")));
    EXPECT_THAT(shown("$QRV status | cat"), Not(HasSubstr("\x1B")));
}

TEST_F(Terminal, ShowsADifferenceInColours) {
    project.write({{"list.csv", "flange;4\n"}});
    EXPECT_THAT(shown("$QRV diff"), AllOf(HasSubstr("\x1B[36m@@ -1 +1 @@\x1B[0m\r\n"),
                                          HasSubstr("\x1B[31m-flange;3\x1B[0m\r\n"),
                                          HasSubstr("\x1B[32m+flange;4\x1B[0m\r\n")));
}

TEST_F(Terminal, IsNotSteeredByTheContentsOfAFile) {
    const std::string line = "a\tb\x1B]0;title\x07 \xE4\n";
    project.write({{"list.csv", line}});
    EXPECT_THAT(shown("$QRV diff"), HasSubstr("+a\tb\\x1B]0;title\\x07 \\xE4\x1B[0m\r\n"));
    EXPECT_THAT(project.run({"diff"}), HasSubstr("+" + line));
}

// The list of files sent what stands in a name to the terminal, where the other commands show it
// escaped: names were printed with their own bytes everywhere.
TEST_F(Terminal, IsNotSteeredByTheNameOfAFile) {
    const std::string name = "a\x1B[2J\u202Eb\u200Bc";
    const std::string shownName = "a\\x1B[2J\\u202Eb\\u200Bc\r\n";
    project.write({{name, "x"}});
    EXPECT_THAT(shown("$QRV files"), HasSubstr(shownName));
    EXPECT_THAT(shown("$QRV status --names"), HasSubstr(shownName));
    EXPECT_THAT(shown("$QRV diff --names"), HasSubstr(shownName));
    EXPECT_THAT(shown("$QRV files --json"), HasSubstr("a\\u001B[2J\\u202Eb\\u200Bc\""));
    EXPECT_THAT(project.run({"files"}), HasSubstr(name + "\n"));
    EXPECT_THAT(project.run({"files", "--json"}), HasSubstr("\u202Eb\u200Bc\""));
}

TEST_F(Terminal, ShowsHowFarLongWorkIsAndWipesItOut) {
    for (const std::string name : {"a", "b", "c", "d", "e", "f", "g", "h"})
        project.write({{name, name}});
    project.run({"add", "--all"});
    // Every look at a file is made to take its time.
    const std::string slow = "strace -qq -o /dev/null -e inject=newfstatat:delay_exit=30000 ";
    const std::string committing = shown(slow + "$QRV commit -m x");
    EXPECT_THAT(committing, AllOf(HasSubstr("\rStoring: "), HasSubstr(" of 8 files, "),
                                  HasSubstr(" bytes/s\x1B[K"), HasSubstr("\r\x1B[KCommit 2 on ")));
    EXPECT_THAT(shown("$QRV verify"), Not(HasSubstr("Checking")));
}

}  // namespace
