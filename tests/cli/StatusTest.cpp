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
using qrv_test::writeFile;

const std::string busyState = R"({
    "head": {"reference": "r\u00E9vision\u001B"},
    "staged_files": [
        {"path": "new plan.dxf", "file_change": "added"},
        {"path": "gone\n\u202E.txt", "file_change": "removed"}
    ],
    "conflicts": [
        {"path": "sub/\u00E4.dxf", "remote_url": "tf:a#1", "local_type": "modified",
         "remote_type": "removed"}
    ]
})";

/// A repository with two files.
class StatusCommand : public testing::Test {
protected:
    StatusCommand() {
        writeFile(folder / "plan.dxf", "");
        EXPECT_EQ(runQrv(folder.path(), {"init"}).status, 0);
    }

    const TemporaryFolder folder;
    const std::string path = fs::canonical(folder.path());
};

TEST_F(StatusCommand, ShowsAQuietRepository) {
    EXPECT_EQ(runQrv(folder.path(), {"status"}), (Outcome{0,
                                                          "Repository: " + path +
                                                              "\n"
                                                              "Branch: master\n"
                                                              "Files: 2\n"
                                                              "Staged: 0\n"
                                                              "Conflicts: 0\n",
                                                          ""}));
}

TEST_F(StatusCommand, ListsStagedFilesAndConflicts) {
    writeFile(folder / ".qrv/qrv.state", busyState);
    EXPECT_EQ(runQrv(folder.path(), {"status"}),
              (Outcome{0,
                       "Repository: " + path +
                           "\n"
                           "Branch: révision\\x1B\n"
                           "Files: 2\n"
                           "Staged: 2\n"
                           "Conflicts: 1\n"
                           "\n"
                           "Staged for the next commit:\n"
                           "  added: new plan.dxf\n"
                           "  removed: gone\\x0A\\u202E.txt\n"
                           "\n"
                           "Conflicts to resolve:\n"
                           "  sub/ä.dxf (modified here, removed on the server)\n",
                       ""}));
}

TEST_F(StatusCommand, PrintsJsonWhenAsked) {
    writeFile(folder / ".qrv/qrv.state", busyState);
    EXPECT_EQ(runQrv(folder.path(), {"status", "--json"}), (Outcome{0,
                                                                    R"({
    "branch" : "révision\u001B",
    "conflicts" : [
        {
            "local" : "modified",
            "path" : "sub/ä.dxf",
            "remote" : "removed"
        }
    ],
    "files" : 2,
    "root" : ")" + path +
                                                                        R"(",
    "staged" : [
        {
            "change" : "added",
            "path" : "new plan.dxf"
        },
        {
            "change" : "removed",
            "path" : "gone\n)"
                                                                        "\u202E"
                                                                        R"(.txt"
        }
    ]
}
)",
                                                                    ""}));
}

TEST_F(StatusCommand, PrintsJsonOfAQuietRepository) {
    EXPECT_EQ(runQrv("/", {"status", path, "--json"}), (Outcome{0,
                                                                R"({
    "branch" : "master",
    "conflicts" : [
    ],
    "files" : 2,
    "root" : ")" + path + R"(",
    "staged" : [
    ]
}
)",
                                                                ""}));
}

TEST_F(StatusCommand, OnlyReadsTheState) {
    writeFile(folder / ".qrv/qrv.state", busyState);
    const auto before = contentsOf(folder.path());
    const auto time = fs::last_write_time(folder / ".qrv");
    EXPECT_EQ(runQrv(folder.path(), {"status"}).status, 0);
    EXPECT_EQ(contentsOf(folder.path()), before);
    EXPECT_EQ(fs::last_write_time(folder / ".qrv"), time);
}

TEST_F(StatusCommand, TellsTheBadLinesOfTheIgnoreFileToo) {
    writeFile(folder / ".qrv/properties/ignore", "^[");
    const Outcome outcome = runQrv(folder.path(), {"status"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.messages.substr(0, 68),
              "qrv: An error occurred while parsing the ignored file:\nqrv: Line 1: ");
}

}  // namespace
