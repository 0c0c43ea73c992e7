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
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;

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

}  // namespace
