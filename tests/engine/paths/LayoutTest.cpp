#include <engine/paths/Layout.h>

#include <gtest/gtest.h>

namespace {

namespace layout = qrv::layout;

TEST(Layout, PutsEachKindOfFileIntoItsFolder) {
    EXPECT_EQ(layout::objectPath("0a1b"), ".qrv/objects/0a1b");
    EXPECT_EQ(layout::drawingStorePath(L"0a1b"), ".qrv/tf/0a1b.tf");
    EXPECT_EQ(layout::commitRecordPath(L"0a1b"), ".qrv/commits/0a1b");
    EXPECT_EQ(layout::damagedHistoryPath(2), ".qrv/qrv.db.damaged-2");
}

}  // namespace
