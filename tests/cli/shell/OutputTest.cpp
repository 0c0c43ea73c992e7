#include <tests/cli/Program.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <string>

namespace {

using qrv_test::contentsOf;
using qrv_test::Outcome;
using qrv_test::readFile;
using qrv_test::runQrv;
using qrv_test::runShell;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

const std::string commands[] = {"--help",
                                "--version",
                                "init",
                                "files",
                                "status",
                                "state",
                                "name",
                                "projects --json",
                                "projects add",
                                "locate tf:a#1",
                                "convert init-data record"};

/// A repository, since even `init` prints there, with a name and a server's record.
class OutputOf : public testing::TestWithParam<std::string> {
protected:
    OutputOf() {
        EXPECT_EQ(runQrv(folder.path(), {"init", "--name", "Anbau"}).status, 0);
        writeFile(folder / "record", R"({"id": "17"})");
        writeFile(folder / ".qrv/lock", "");
    }

    const TemporaryFolder folder;
};

TEST_P(OutputOf, ThatIsLostIsAFailure) {
    EXPECT_EQ(
        runShell(folder.path(), "\"$QRV\" " + GetParam() + " >/dev/full"),
        (Outcome{1, "", "qrv: Standard output cannot be written: No space left on device\n"}));
}

TEST_P(OutputOf, ThatIsClosedIsAFailure) {
    const auto before = contentsOf(folder.path());
    EXPECT_EQ(runShell(folder.path(), "\"$QRV\" " + GetParam() + " >&-"),
              (Outcome{1, "", "qrv: Standard output cannot be written: Bad file descriptor\n"}));
    EXPECT_EQ(runShell(folder.path(), "\"$QRV\" " + GetParam() + " <&- >&- 2>&-"),
              (Outcome{1, "", ""}));
    EXPECT_EQ(contentsOf(folder.path()), before);
}

TEST_P(OutputOf, ThatNobodyReadsIsAQuietFailure) {
    EXPECT_EQ(runShell(folder.path(),
                       "{ { sleep 0.2; \"$QRV\" " + GetParam() + "; echo $? >&3; } | true; } 3>&1"),
              (Outcome{0, "1\n", ""}));
}

INSTANTIATE_TEST_SUITE_P(EachCommand, OutputOf, testing::ValuesIn(commands));

TEST(Output, OfAClosedStreamNeverReachesAFileOfTheRepository) {
    const TemporaryFolder folder;
    const TemporaryFolder log;
    const std::string trace = (log / "trace").string();
    EXPECT_EQ(runShell(folder.path(), "strace -e trace=open,openat,openat2 -o " + trace +
                                          " \"$QRV\" init <&- >&- 2>&-")
                  .status,
              1);
    const std::string opened = readFile(trace);
    EXPECT_THAT(opened, testing::ContainsRegex("qrv-tmp\"[^\n]* = [3-9]\n"));
    EXPECT_THAT(opened, testing::Not(testing::ContainsRegex("\\.qrv(/|-tmp)[^\n]* = [012]\n")));
}

TEST(Output, LongerThanAnyBufferArrivesWhole) {
    const TemporaryFolder folder;
    std::string expected;
    for (int number = 10000; number < 15000; ++number) {
        const std::string name = std::to_string(number) + std::string(20, 'x');
        writeFile(folder / name, "");
        expected += name + "\n";
    }
    EXPECT_EQ(runQrv(folder.path(), {"init"}).status, 0);
    EXPECT_EQ(runQrv(folder.path(), {"files"}),
              (Outcome{0, expected + ".qrv/properties/ignore\n", ""}));
    EXPECT_EQ(runShell(folder.path(), "\"$QRV\" files | head -n 1"),
              (Outcome{0, expected.substr(0, 26), ""}));
}

}  // namespace
