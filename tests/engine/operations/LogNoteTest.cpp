#include <engine/operations/Init.h>
#include <engine/operations/LogNote.h>
#include <tests/engine/base/RecordingCaller.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <filesystem>

namespace {

using qrv_test::anyCaller;
using qrv_test::TemporaryFolder;

TEST(LogNote, IsALineOfTheLog) {
    const TemporaryFolder folder;
    ASSERT_TRUE(qrv::initialise(folder.path(), {}, anyCaller()));
    ASSERT_TRUE(qrv::addLogNote(folder.path(), L"Sent to the builder", anyCaller()));
    EXPECT_THAT(qrv_test::readFile(folder / ".qrv/qrv.log"),
                testing::HasSubstr("Sent to the builder"));
}

TEST(LogNote, IsOneLine) {
    const TemporaryFolder folder;
    ASSERT_TRUE(qrv::initialise(folder.path(), {}, anyCaller()));
    EXPECT_EQ(qrv::addLogNote(folder.path(), L"a\nb", anyCaller()).error().message,
              OdString(L"A note must be one line of plain text"));
    EXPECT_FALSE(std::filesystem::exists(folder / ".qrv/qrv.log"));
}

}  // namespace
