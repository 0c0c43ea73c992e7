#include <engine/operations/Files.h>
#include <engine/operations/Init.h>
#include <tests/engine/base/RecordingCaller.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

namespace {

using qrv_test::anyCaller;
using qrv_test::TemporaryFolder;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(Files, AreWhatTheRulesLeave) {
    const TemporaryFolder folder;
    ASSERT_TRUE(qrv::initialise(folder.path(), {}, anyCaller()));
    for (const char* name : {"plan.dxf", "plan.bak", "sheets/a.dxf"})
        qrv_test::writeFile(folder / name, "");
    const auto listed = qrv::listFiles(folder / "sheets", anyCaller());
    ASSERT_TRUE(listed);
    EXPECT_THAT(listed->files, ElementsAre(OdString(L"plan.dxf"), OdString(L"sheets/a.dxf"),
                                           OdString(L".qrv/properties/ignore")));
    EXPECT_THAT(listed->unread, IsEmpty());
}

TEST(Files, OfAFolderInNoRepositoryAreNone) {
    const TemporaryFolder folder;
    const auto listed = qrv::listFiles(folder.path(), anyCaller());
    ASSERT_FALSE(listed);
    EXPECT_THAT(listed.error().message.toNarrow(), testing::HasSubstr(folder.path()));
}

}  // namespace
