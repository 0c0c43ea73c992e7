#include <tests/cli/Program.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::contentsOf;
using qrv_test::Outcome;
using qrv_test::runQrv;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

/// A repository with a few files.
class FilesCommand : public testing::Test {
protected:
    FilesCommand() {
        for (const char* const file :
             {"b.dxf", "a.txt", "a.bak", "sub/ä ö.txt", "sub/deep/plan.dwl", "sub/deep/z"})
            writeFile(folder / file, "");
        EXPECT_EQ(runQrv(folder.path(), {"init"}).status, 0);
    }

    const TemporaryFolder folder;
    const std::string listing = "a.txt\nb.dxf\nsub/ä ö.txt\nsub/deep/z\n.qrv/properties/ignore\n";
};

TEST_F(FilesCommand, ListsWhatTheIgnoreRulesLeave) {
    EXPECT_EQ(runQrv(folder.path(), {"files"}), (Outcome{0, listing, ""}));
}

TEST_F(FilesCommand, ListsTheWholeRepositoryFromAnyFolderInIt) {
    EXPECT_EQ(runQrv(folder / "sub/deep", {"files"}), (Outcome{0, listing, ""}));
    EXPECT_EQ(runQrv(folder / ".qrv/properties", {"files"}), (Outcome{0, listing, ""}));
    EXPECT_EQ(runQrv("/", {"files", (folder / "sub/").string()}), (Outcome{0, listing, ""}));
}

TEST_F(FilesCommand, FindsTheInnermostRepository) {
    EXPECT_EQ(runQrv(folder.path(), {"init", "sub/deep"}).status, 0);
    EXPECT_EQ(runQrv(folder / "sub/deep", {"files"}),
              (Outcome{0, "z\n.qrv/properties/ignore\n", ""}));
}

TEST_F(FilesCommand, TakesNoFileForAMetadataFolder) {
    writeFile(folder / "sub/.qrv", "");
    EXPECT_EQ(runQrv(folder / "sub/deep", {"files"}), (Outcome{0, listing, ""}));
}

TEST_F(FilesCommand, PrintsTheBytesOfNames) {
    const std::string hostile = "\x1B[2J\nline\xFF.txt";
    writeFile(folder / ("sub/" + hostile), "");
    EXPECT_EQ(runQrv(folder.path(), {"files"}),
              (Outcome{0,
                       "a.txt\nb.dxf\nsub/" + hostile +
                           "\nsub/ä ö.txt\nsub/deep/z\n.qrv/properties/ignore\n",
                       ""}));
}

TEST_F(FilesCommand, EndsPathsWithNulWhenAsked) {
    std::string expected = listing;
    for (char& character : expected)
        character = character == '\n' ? '\0' : character;
    EXPECT_EQ(runQrv(folder.path(), {"files", "-0"}), (Outcome{0, expected, ""}));
}

TEST_F(FilesCommand, PrintsJsonWhenAsked) {
    writeFile(folder / "quote\"\x1B\xFF", "");
    EXPECT_EQ(
        runQrv(folder.path(), {"files", "--json"}),
        (Outcome{0,
                 "[\n    \"a.txt\",\n    \"b.dxf\",\n    \"quote\\\"\\u001B\\uDCFF\",\n"
                 "    \"sub/ä ö.txt\",\n    \"sub/deep/z\",\n    \".qrv/properties/ignore\"\n]\n",
                 ""}));
}

TEST_F(FilesCommand, TellsTheBadLinesOfTheIgnoreFileAndListsAllTheSame) {
    writeFile(folder / ".qrv/properties/ignore", "*.dxf\n^[\n*.bak\n*.dwl\n[z-a]");
    const Outcome outcome = runQrv(folder.path(), {"files"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "a.txt\nsub/ä ö.txt\nsub/deep/z\n.qrv/properties/ignore\n");
    EXPECT_THAT(outcome.messages,
                testing::MatchesRegex("qrv: An error occurred while parsing the ignored file:\n"
                                      "qrv: Line 2: [^\n]+\nqrv: Line 5: [^\n]+\n"));
}

TEST_F(FilesCommand, MakesAMissingIgnoreFile) {
    const auto before = contentsOf(folder.path());
    fs::remove_all(folder / ".qrv/properties");
    EXPECT_EQ(runQrv(folder.path(), {"files"}), (Outcome{0, listing, ""}));
    EXPECT_EQ(contentsOf(folder.path()), before);
}

TEST_F(FilesCommand, NeedsNoState) {
    fs::remove(folder / ".qrv/qrv.state");
    const auto before = contentsOf(folder.path());
    EXPECT_EQ(runQrv(folder.path(), {"files"}), (Outcome{0, listing, ""}));
    EXPECT_EQ(contentsOf(folder.path()), before);
}

}  // namespace
