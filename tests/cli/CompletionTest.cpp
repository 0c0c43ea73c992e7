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

TEST(Manual, FailsForACommandThatIsNone) {
    const TemporaryFolder folder;
    EXPECT_EQ(runQrv(folder.path(), {"manual", "push"}),
              (Outcome{1, "", "qrv: There is no command 'push'\n"}));
}

}  // namespace
