#include <engine/paths/PathParts.h>

#include <gtest/gtest.h>

namespace {

TEST(PathParts, AreTheFolderAndTheName) {
    EXPECT_EQ(qrv::parentOf(L"a/b/c"), OdString(L"a/b"));
    EXPECT_EQ(qrv::parentOf(L"a"), OdString());
    EXPECT_EQ(qrv::folderOf(L"a/b"), OdString(L"a"));
    EXPECT_EQ(qrv::folderOf(L"a"), OdString(L"."));
    EXPECT_EQ(qrv::nameOf(L"a/b/c"), OdString(L"c"));
    EXPECT_EQ(qrv::nameOf(L"a"), OdString(L"a"));
}

TEST(ChosenPath, IsTheFileItselfOrBelowTheFolder) {
    EXPECT_TRUE(qrv::isChosen(L"plans/a.dwg", {L"plans/a.dwg"}));
    EXPECT_TRUE(qrv::isChosen(L"plans/old/a.dwg", {L"x", L"plans"}));
    EXPECT_TRUE(qrv::isChosen(L"anything", {L""}));
    EXPECT_FALSE(qrv::isChosen(L"plans 2/a.dwg", {L"plans"}));
    EXPECT_FALSE(qrv::isChosen(L"plans", {L"plans/a.dwg"}));
    EXPECT_FALSE(qrv::isChosen(L"Plans/a.dwg", {L"plans"}));
    EXPECT_FALSE(qrv::isChosen(L"a", {}));
}

}  // namespace
