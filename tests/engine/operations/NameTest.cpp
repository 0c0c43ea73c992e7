#include <engine/operations/Init.h>
#include <engine/operations/Name.h>
#include <tests/engine/base/RecordingCaller.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

namespace {

using qrv_test::anyCaller;
using qrv_test::TemporaryFolder;

TEST(Name, IsThatOfTheProjectOrOfItsFolder) {
    const TemporaryFolder folder;
    ASSERT_TRUE(qrv::initialise(folder / "house", {}, anyCaller()));
    const auto unnamed = qrv::projectIn(folder / "house", anyCaller());
    ASSERT_TRUE(unnamed);
    EXPECT_EQ(unnamed->name, OdString());
    EXPECT_EQ(unnamed->displayName, OdString(L"house"));
    ASSERT_TRUE(qrv::renameProject(folder / "house", L"House 12", anyCaller()));
    const auto named = qrv::projectIn(folder / "house", anyCaller());
    ASSERT_TRUE(named);
    EXPECT_EQ(named->name, OdString(L"House 12"));
    EXPECT_EQ(named->displayName, OdString(L"House 12"));
    EXPECT_EQ(named->root.path(), folder.text("house"));
}

TEST(Name, StaysWhenTheNewOneIsRefused) {
    const TemporaryFolder folder;
    ASSERT_TRUE(qrv::initialise(folder.path(), {.name = L"House 12"}, anyCaller()));
    EXPECT_EQ(qrv::renameProject(folder.path(), L" ", anyCaller()).error().message,
              OdString(L"A project's name cannot be empty"));
    EXPECT_EQ(qrv::projectIn(folder.path(), anyCaller())->name, OdString(L"House 12"));
}

}  // namespace
