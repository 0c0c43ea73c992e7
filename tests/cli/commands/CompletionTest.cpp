#include <tests/cli/Program.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <cstddef>
#include <filesystem>
#include <string>

namespace {

using qrv_test::Outcome;
using qrv_test::runQrv;
using qrv_test::runShell;
using qrv_test::TemporaryFolder;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/// What bash offers for the last of the words, one a line.
std::string offered(const TemporaryFolder& folder, const std::string& words) {
    const TemporaryFolder scripts;
    const std::filesystem::path script = scripts.path() / "offer";
    qrv_test::writeFile(script,
                        "PATH=$(dirname \"$QRV\"):$PATH\n"
                        "eval \"$(qrv completion bash)\"\n"
                        "compopt() { :; }\n"
                        "COMP_WORDS=(" +
                            words +
                            ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_qrv\n"
                            "printf '%s\\n' \"${COMPREPLY[@]}\"\n");
    return runShell(folder.path(), "QRV=\"$QRV\" bash '" + script.native() + "'").output;
}

TEST(Completion, OffersCommandsInBash) {
    const TemporaryFolder folder;
    EXPECT_EQ(offered(folder, "qrv sta"), "status\nstate\n");
    EXPECT_EQ(offered(folder, "qrv -C . resto"), "restore\n");
}

TEST(Completion, OffersTheOptionsOfACommandInBash) {
    const TemporaryFolder folder;
    EXPECT_EQ(offered(folder, "qrv commit --m"), "--message\n");
}

TEST(Completion, OffersFilesInBash) {
    const TemporaryFolder folder;
    qrv_test::writeFile(folder.path() / "plan.dxf", "x");
    EXPECT_EQ(offered(folder, "qrv add pl"), "plan.dxf\n");
}

TEST(Completion, OffersBranchesInBash) {
    const TemporaryFolder folder;
    ASSERT_EQ(runShell(folder.path(),
                       "$QRV init && $QRV add --all && $QRV commit -m x && "
                       "$QRV branch side")
                  .status,
              0);
    EXPECT_EQ(offered(folder, "qrv switch s"), "side\n");
}

TEST(Completion, OffersBranchesAndTagsForACommitInBash) {
    const TemporaryFolder folder;
    ASSERT_EQ(runShell(folder.path(),
                       "$QRV init && $QRV add --all && $QRV commit -m x && "
                       "$QRV branch side && $QRV tag sent")
                  .status,
              0);
    EXPECT_EQ(offered(folder, "qrv log s"), "side\nsent\n");
    EXPECT_EQ(offered(folder, "qrv switch s"), "side\n");
    qrv_test::writeFile(folder.path() / "sheet.dxf", "x");
    EXPECT_EQ(offered(folder, "qrv restore --from s"), "side\nsent\nsheet.dxf\n");
}

TEST(Completion, OffersWhatACommandCanBeToldToDoInBash) {
    const TemporaryFolder folder;
    EXPECT_EQ(offered(folder, "qrv ignore ch"), "check\n");
}

TEST(Completion, NeitherRunsNorTypesWhatABranchIsCalledInBash) {
    const TemporaryFolder folder;
    ASSERT_EQ(runShell(folder.path(),
                       "$QRV init && $QRV add --all && $QRV commit -m x && "
                       "$QRV branch 's$(touch${IFS}made)'")
                  .status,
              0);
    EXPECT_EQ(offered(folder, "qrv switch s"), "s\\$\\(touch\\$\\{IFS\\}made\\)\n");
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "made"));
}

/// What a shell offers for the line, one a line, in a repository with the branches "side" and
/// "s$(touch${IFS}made)".
std::string offeredBy(const std::string& shell, const std::string& line) {
    const TemporaryFolder folder;
    EXPECT_EQ(runShell(folder.path(),
                       "$QRV init && $QRV add --all && $QRV commit -m x && $QRV branch side && "
                       "$QRV branch 's$(touch${IFS}made)'")
                  .status,
              0);
    const Outcome outcome = runShell(
        folder.path(), "PATH=$(dirname \"$QRV\"):$PATH; export PATH; " + shell + " '" + line + "'");
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "made"));
    EXPECT_EQ(outcome.messages, "");
    return outcome.output;
}

TEST(Completion, OffersCommandsAndBranchesInFish) {
    const std::string fish =
        "fish --no-config -c 'qrv completion fish | source; complete -C $argv[1]'";
    EXPECT_EQ(offeredBy(fish, "qrv resto"), "restore\tBring back files as they were in a commit\n");
    EXPECT_EQ(offeredBy(fish, "qrv commit --me"), "--message\tWhat was done\n");
    EXPECT_EQ(offeredBy(fish, "qrv switch si"), "side\n");
    EXPECT_EQ(offeredBy(fish, "qrv switch s"), "s$(touch${IFS}made)\nside\n");
    EXPECT_EQ(offeredBy(fish, "qrv ignore ch"),
              "check\tTell which rule ignores a path; fails when none does\n");
}

TEST(Completion, IsUnderstoodByZsh) {
    const TemporaryFolder folder;
    EXPECT_EQ(runShell(folder.path(), "$QRV completion zsh > _qrv; zsh -n _qrv"),
              (Outcome{0, "", ""}));
}

TEST(Completion, TypesWhatABranchIsCalledAsOneWordInZsh) {
    const TemporaryFolder folder;
    ASSERT_EQ(runShell(folder.path(),
                       "$QRV init && $QRV add --all && $QRV commit -m x && "
                       "$QRV branch 's$(touch${IFS}made)' && $QRV completion zsh > _qrv")
                  .status,
              0);
    // A zsh in a terminal of its own, in which somebody presses the tabulator and return.
    qrv_test::writeFile(folder / "type.zsh",
                        "zmodload zsh/zpty\n"
                        "zpty shell zsh -f -i\n"
                        "zpty -w shell \"PATH=${QRV:h}:\\$PATH; fpath=($PWD \\$fpath)\"\n"
                        "zpty -w shell 'autoload -Uz compinit; compinit -u -D'\n"
                        "zpty -w -n shell $'qrv switch s\\t\\n'\n"
                        "zpty -w shell 'print \"<$?>\"; exit'\n"
                        "zpty -r shell shown '*<[0-9]##>*'\n"
                        "print -r -- $shown\n");
    EXPECT_THAT(runShell(folder.path(), "timeout 60 zsh -f -o extendedglob type.zsh").output,
                HasSubstr("On branch 's$(touch${IFS}made)'; files changed: 0"));
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "made"));
}

TEST(Completion, DescribesEveryCommandForZshAndFish) {
    const TemporaryFolder folder;
    const std::string names = runQrv(folder.path(), {"manual", "--list"}).output;
    const std::string zsh = runQrv(folder.path(), {"completion", "zsh"}).output;
    const std::string fish = runQrv(folder.path(), {"completion", "fish"}).output;
    ASSERT_THAT(names, HasSubstr("commit\n"));
    for (std::size_t begin = 0; begin < names.size();) {
        const std::size_t end = names.find('\n', begin);
        const std::string name = names.substr(begin, end - begin);
        EXPECT_THAT(zsh, AllOf(HasSubstr("'" + name + ":"), HasSubstr("    " + name + ")\n")));
        EXPECT_THAT(fish, HasSubstr("-f -a '" + name + "' -d '"));
        begin = end + 1;
    }
    EXPECT_THAT(zsh, HasSubstr("'--message:What was done'"));
    EXPECT_THAT(fish, HasSubstr("commit' -s m -l message -r -d 'What was done'\n"));
}

TEST(Completion, RefusesAnUnknownShell) {
    const TemporaryFolder folder;
    const Outcome outcome = runQrv(folder.path(), {"completion", "tcsh"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.messages, HasSubstr("tcsh"));
}

TEST(Manual, HasAPageForTheProgramThatListsItsCommands) {
    const TemporaryFolder folder;
    const Outcome outcome = runQrv(folder.path(), {"manual"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, AllOf(HasSubstr(".TH QRV 1 \"\" \"qrv "),
                                      HasSubstr(".SH COMMANDS\n.TP\n\\fBqrv\\-init\\fR(1)\n"),
                                      HasSubstr(".SH EXIT STATUS\n"), Not(HasSubstr("ARGUMENTS"))));
}

TEST(Manual, SaysOfACommandWhatItsHelpSays) {
    const TemporaryFolder folder;
    const Outcome outcome = runQrv(folder.path(), {"manual", "log-note"});
    EXPECT_THAT(outcome.output, HasSubstr(".SH NAME\nqrv\\-log\\-note \\- Write a line into the "
                                          "activity log\n.SH SYNOPSIS\n.B qrv\n.B log\\-note\n"
                                          "[\\fIOPTIONS\\fR] [\\fITEXT\\fR]\n"));
}

TEST(Manual, ExplainsWhatACommandCanBeToldToDo) {
    const TemporaryFolder folder;
    EXPECT_THAT(
        runQrv(folder.path(), {"manual", "projects"}).output,
        AllOf(HasSubstr("[\\fIOPTIONS\\fR] [\\fICOMMAND\\fR ...]\n"),
              HasSubstr(".SH COMMANDS\n.TP\n\\fBlist\\fR\nList the projects (the default)\n"),
              HasSubstr(".TP\n\\fBadd\\fR \\fIDIR\\fR\n"
                        "Register the repository that holds a folder\n.RS\n.TP\n\\fBDIR\\fR\n"),
              HasSubstr(".RS\n.TP\n\\fB\\-\\-name\\fR \\fITEXT\\fR\nThe name to list")));
}

TEST(Manual, FailsForACommandThatIsNone) {
    const TemporaryFolder folder;
    EXPECT_EQ(runQrv(folder.path(), {"manual", "push"}),
              (Outcome{1, "", "qrv: There is no command 'push'\n"}));
}

}  // namespace
