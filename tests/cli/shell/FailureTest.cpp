#include <tests/cli/Program.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv_test::contentsOf;
using qrv_test::Outcome;
using qrv_test::runQrv;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

Outcome failed(const std::string& message) {
    return {1, "", "qrv: " + message + "\n"};
}

TEST(Failure, OfACommandOutsideOfAnyRepository) {
    const TemporaryFolder folder;
    writeFile(folder / "a/plan.dxf", "");
    const std::string path = fs::canonical(folder.path());
    const auto before = contentsOf(folder.path());
    for (const std::string command : {"files", "status", "state"})
        EXPECT_EQ(
            runQrv(folder.path(), {command, "a"}),
            failed("'" + path +
                   "/a' is not in a repository, nor is any folder above it one (qrv init makes "
                   "one)"));
    EXPECT_EQ(contentsOf(folder.path()), before);
}

TEST(Failure, OfACommandOnSomethingThatIsNoFolder) {
    const TemporaryFolder folder;
    EXPECT_EQ(runQrv(folder.path(), {"init"}).status, 0);
    writeFile(folder / "plan.dxf", "");
    fs::create_symlink("nowhere", folder / "broken");
    const auto before = contentsOf(folder.path());
    for (const std::string command : {"files", "status", "state"}) {
        EXPECT_EQ(runQrv(folder.path(), {command, "missing\x1B"}),
                  failed("'missing\\x1B' cannot be opened: No such file or directory"));
        EXPECT_EQ(runQrv(folder.path(), {command, "plan.dxf"}),
                  failed("'plan.dxf' cannot be opened: Not a directory"));
        EXPECT_EQ(runQrv(folder.path(), {command, "broken"}),
                  failed("'broken' cannot be opened: No such file or directory"));
        EXPECT_EQ(runQrv(folder.path(), {command, ""}),
                  failed("'' cannot be opened: Invalid argument"));
    }
    EXPECT_EQ(contentsOf(folder.path()), before);
}

TEST(Failure, OfACommandWithoutAStateFile) {
    const TemporaryFolder folder;
    fs::create_directory(folder / ".qrv");
    writeFile(folder / ".qrv/lock", "");
    const auto before = contentsOf(folder.path());
    for (const std::string command : {"status", "state"})
        EXPECT_EQ(runQrv(folder.path(), {command}),
                  failed("No state file found at " + fs::canonical(folder.path()).string() +
                         "/.qrv/qrv.state"));
    EXPECT_EQ(contentsOf(folder.path()), before);
}

TEST(Failure, OfADamagedState) {
    struct Case {
        std::string state;
        std::string message;
    };
    const std::string unparsable = "Unable to parse json, please check if syntax is valid";
    const TemporaryFolder folder;
    const std::string stateFile = fs::canonical(folder.path()).string() + "/.qrv/qrv.state";
    const Case cases[] = {
        {"", unparsable},
        {"{\"head\" : {\"reference\" : ", unparsable},
        {"{\"head\" : {\"reference\" : \"mas",
         "The state file '" + stateFile + "' ends in the middle of a text"},
        {std::string(100, '\0'), unparsable},
        {std::string(1000000, '['), "The state file '" + stateFile +
                                        "' has more than 100 levels of brackets, and is not read"},
        {"[]", "Error: Expected json type 'object', found 'array'"},
        {"{}", "State does not contain HEAD."},
        {"{\"head\" : {}}", "HEAD does not point to a branch"},
        {"{\"head\" : {\"reference\" : \"a\"}, \"staged_files\" : [{\"path\" : \"a\", "
         "\"file_change\" : \"\x1B[2J\"}]}",
         "Unsupported file change enum: \\x1B[2J"},
    };
    for (const Case& each : cases) {
        writeFile(folder / ".qrv/qrv.state", each.state);
        writeFile(folder / ".qrv/lock", "");
        const auto before = contentsOf(folder.path());
        for (const std::string command : {"status", "state"})
            EXPECT_EQ(runQrv(folder.path(), {command}), failed(each.message))
                << command << " of " << each.state.substr(0, 100);
        EXPECT_EQ(contentsOf(folder.path()), before);
    }
}

TEST(Failure, OfAStateThatIsNoFile) {
    const TemporaryFolder folder;
    fs::create_directories(folder / ".qrv/qrv.state");
    writeFile(folder / ".qrv/lock", "");
    const auto before = contentsOf(folder.path());
    for (const std::string command : {"status", "state"})
        EXPECT_EQ(runQrv(folder.path(), {command}),
                  failed("'" + fs::canonical(folder.path()).string() +
                         "/.qrv/qrv.state' is not a regular file"));
    EXPECT_EQ(contentsOf(folder.path()), before);
}

}  // namespace
