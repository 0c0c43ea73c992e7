#include <tests/cli/Program.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using qrv_test::contentsOf;
using qrv_test::Outcome;
using qrv_test::readFile;
using qrv_test::runQrv;
using qrv_test::runShell;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

#ifdef __SANITIZE_ADDRESS__
// The sanitizer's own memory is beyond any limit.
const std::string limited = "\"$QRV\"";
#else
const std::string limited = "ulimit -v 1000000; \"$QRV\"";
#endif

TEST(StateCommand, PrintsTheStateOfANewRepository) {
    const TemporaryFolder folder;
    EXPECT_EQ(runQrv(folder.path(), {"init"}).status, 0);
    EXPECT_EQ(
        runQrv(folder.path(), {"state"}),
        (Outcome{0, "{\n    \"head\" : {\n        \"reference\" : \"master\"\n    }\n}\n", ""}));
    EXPECT_EQ(runQrv(folder.path(), {"state"}).output, readFile(folder / ".qrv/qrv.state") + "\n");
}

TEST(StateCommand, BringsAnEditedStateIntoTheUsualForm) {
    const TemporaryFolder folder;
    writeFile(folder / ".qrv/qrv.state",
              "\xEF\xBB\xBF{\"renames\":[{\"previous\":\"a\\u00e4\",\"new\":\"b\xFF\"},],\r\n"
              "\"head\":{\"reference\":\"main\"}} trailing");
    const auto before = contentsOf(folder.path());
    EXPECT_EQ(runQrv(folder.path(), {"state"}), (Outcome{0,
                                                         R"({
    "head" : {
        "reference" : "main"
    },
    "renames" : [
        {
            "new" : "b\uDCFF",
            "previous" : "aä"
        }
    ]
}
)",
                                                         ""}));
    EXPECT_EQ(contentsOf(folder.path()), before);
}

TEST(StateCommand, FindsTheRepositoryAbove) {
    const TemporaryFolder folder;
    EXPECT_EQ(runQrv(folder.path(), {"init"}).status, 0);
    writeFile(folder / "sub/deep/file", "");
    EXPECT_EQ(runQrv(folder / "sub/deep", {"state"}), runQrv(folder.path(), {"state"}));
    EXPECT_EQ(runQrv("/", {"state", (folder / "sub").string()}), runQrv(folder.path(), {"state"}));
}

// Symptom: a state file of 6 MB of brackets cost 4.7 GB. Cause: each level is a value with memory
// of its own, and the printing indents it.
TEST(StateCommand, RefusesAFileThatIsAllBrackets) {
    const TemporaryFolder folder;
    EXPECT_EQ(runQrv(folder.path(), {"init"}).status, 0);
    const std::string path = folder.path().string() + "/.qrv/qrv.state";
    const Outcome refused{1, "",
                          "qrv: The state file '" + path +
                              "' has more than 100 levels of brackets, and is not read\n"};
    const std::string head = R"({"head":{"reference":"master"},"other":)";
    const std::string half(3'000'000, '[');
    for (const std::string& text :
         {half + half, head + half + std::string(half.size(), ']') + "}"}) {
        writeFile(path, text);
        EXPECT_EQ(runShell(folder.path(), limited + " state"), refused);
        EXPECT_EQ(runShell(folder.path(), limited + " add --all").status, 1);
    }
    std::string wide = "\xFF\xFE";
    for (int level = 0; level < 101; ++level)
        wide += std::string("[\0", 2);
    writeFile(path, wide);
    EXPECT_EQ(runQrv(folder.path(), {"state"}), refused);
}

TEST(StateCommand, CountsNeitherTextsNorWhatStandsBehindTheDocument) {
    const TemporaryFolder folder;
    const std::string brackets(500, '[');
    writeFile(folder / ".qrv/qrv.state",
              R"({"head":{"reference":"a\"[)" + brackets + R"("}})" + brackets);
    EXPECT_EQ(runQrv(folder.path(), {"state"}).status, 0);
    writeFile(folder / ".qrv/qrv.state", R"({"head":{"reference":"a"},"x":)" +
                                             std::string(99, '[') + std::string(99, ']') + "}");
    EXPECT_EQ(runQrv(folder.path(), {"state"}).status, 0);
}

}  // namespace
