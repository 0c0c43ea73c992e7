#include <tests/cli/Program.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::Outcome;
using qrv_test::readFile;
using qrv_test::runQrv;
using qrv_test::runShell;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;
using testing::MatchesRegex;

/// A repository.
class LogNoteCommand : public testing::Test {
protected:
    LogNoteCommand() { EXPECT_EQ(runQrv(folder.path(), {"init"}).status, 0); }

    const TemporaryFolder folder;
    const fs::path log = folder / ".qrv/qrv.log";
    const Outcome failed = {1, "",
                            "qrv: The activity log '" + fs::canonical(folder.path()).string() +
                                "/.qrv/qrv.log' cannot be written\n"};
    const std::string time =
        "(Mon|Tue|Wed|Thu|Fri|Sat|Sun) [A-Z][a-z][a-z] [ 1-3][0-9] "
        "[0-9][0-9]:[0-9][0-9]:[0-9][0-9] [0-9]+";
};

TEST_F(LogNoteCommand, AddsALineWithTheTime) {
    EXPECT_EQ(runQrv(folder.path(), {"log-note", "sent the plans"}), (Outcome{0, "", ""}));
    EXPECT_THAT(readFile(log), MatchesRegex(time + " - sent the plans\n"));
    EXPECT_EQ(runQrv(folder / ".qrv", {"log-note", "Gehäuse \U0001F4D0"}), (Outcome{0, "", ""}));
    EXPECT_THAT(readFile(log),
                MatchesRegex(time + " - sent the plans\n" + time + " - Gehäuse \U0001F4D0\n"));
}

TEST_F(LogNoteCommand, RefusesWhatIsNotOneLineOfPlainText) {
    const std::string plain = "TEXT: A note must be one line of plain text (see qrv --help)";
    for (const std::string text : {"two\nlines", "two\rlines", "\x1B[2J", "\xFF", "a\xE2\x80\xA8"})
        EXPECT_EQ(runQrv(folder.path(), {"log-note", text}),
                  (Outcome{2, "", "qrv: " + plain + "\n"}))
            << text;
    EXPECT_EQ(runQrv(folder.path(), {"log-note", ""}),
              (Outcome{2, "", "qrv: TEXT: A note cannot be empty (see qrv --help)\n"}));
    EXPECT_FALSE(fs::exists(log));
}

TEST_F(LogNoteCommand, FailsWhenTheLogCannotBeOpened) {
    fs::create_directory(log);
    EXPECT_EQ(runQrv(folder.path(), {"log-note", "text"}),
              (Outcome{1, "",
                       "qrv: '" + fs::canonical(folder.path()).string() +
                           "/.qrv/qrv.log' is not a regular file\n"}));
}

TEST_F(LogNoteCommand, FailsWhenTheDiskIsFull) {
    writeFile(log, "before\n");
    // No file may grow; the pipe to cat is none.
    EXPECT_EQ(
        runShell(folder.path(),
                 "{ trap '' XFSZ; ulimit -f 0; \"$QRV\" log-note text; echo $?; } 2>&1 | cat"),
        (Outcome{0, failed.messages + "1\n", ""}));
    EXPECT_EQ(readFile(log), "before\n");
}

TEST(LogNoteCommandOutside, OfARepositoryFails) {
    const TemporaryFolder folder;
    EXPECT_EQ(runQrv(folder.path(), {"log-note", "text"}),
              (Outcome{1, "",
                       "qrv: '" + fs::canonical(folder.path()).string() +
                           "' is not in a repository, nor is any folder above it one (qrv init "
                           "makes one)\n"}));
}

}  // namespace
