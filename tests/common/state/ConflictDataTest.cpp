#include <common/state/ConflictData.h>

#include <gmock/gmock.h>

#include <utility>

namespace {

using common::ConflictData;
using common::DiffHandles;
using common::FileChange;

class Drawing : public OdRxObject {};

TEST(DiffHandles, AreEmptyAtFirst) {
    const DiffHandles handles;
    EXPECT_TRUE(handles.modified.empty());
    EXPECT_TRUE(handles.locallyRemoved.empty());
    EXPECT_TRUE(handles.remotelyRemoved.empty());
    EXPECT_TRUE(handles.modifiedBlocks.empty());
    EXPECT_TRUE(handles.localDrawing.isNull());
    EXPECT_TRUE(handles.remoteDrawing.isNull());
    EXPECT_FALSE(handles.hasHandles());
}

TEST(DiffHandles, CountInEveryListButTheModifiedBlocks) {
    EXPECT_TRUE((DiffHandles{{1}, {}, {}, {}, {}, {}}.hasHandles()));
    EXPECT_TRUE((DiffHandles{{}, {1}, {}, {}, {}, {}}.hasHandles()));
    EXPECT_TRUE((DiffHandles{{}, {}, {1}, {}, {}, {}}.hasHandles()));
    EXPECT_FALSE((DiffHandles{{}, {}, {}, {1}, {}, {}}.hasHandles()));
    EXPECT_TRUE((DiffHandles{{1}, {}, {}, {1}, {}, {}}.hasHandles()));
}

TEST(DiffHandles, ShareTheirDrawings) {
    auto* local = new Drawing;
    auto* remote = new Drawing;
    {
        DiffHandles first;
        first.localDrawing = OdRxObjectPtr(local);
        first.remoteDrawing = OdRxObjectPtr(remote);
        EXPECT_EQ(local->numRefs(), 2);
        const DiffHandles second = first;
        EXPECT_EQ(local->numRefs(), 3);
        EXPECT_EQ(remote->numRefs(), 3);
        EXPECT_EQ(second, first);
        const DiffHandles third = std::move(first);
        EXPECT_EQ(local->numRefs(), 3);
        EXPECT_EQ(third.remoteDrawing.get(), remote);
    }
    EXPECT_EQ(local->numRefs(), 1);
    EXPECT_EQ(remote->numRefs(), 1);
    local->release();
    remote->release();
}

TEST(ConflictData, HasNoHandlesUnlessTheyAreGiven) {
    const ConflictData conflict(L"a.dwg", L"tf:a#1", FileChange::modified, FileChange::removed);
    EXPECT_EQ(conflict.path, L"a.dwg");
    EXPECT_EQ(conflict.remoteUrl, L"tf:a#1");
    EXPECT_EQ(conflict.localType, FileChange::modified);
    EXPECT_EQ(conflict.remoteType, FileChange::removed);
    EXPECT_EQ(conflict.handles, DiffHandles());
}

TEST(ConflictData, KeepsTheHandlesItIsGiven) {
    const DiffHandles handles{{1}, {2}, {3}, {4}, {}, {}};
    const ConflictData conflict(L"a.dwg", L"tf:a#1", FileChange::added, FileChange::unchanged,
                                handles);
    EXPECT_EQ(conflict.handles, handles);
    EXPECT_EQ(conflict.localType, FileChange::added);
    EXPECT_EQ(conflict.remoteType, FileChange::unchanged);
}

TEST(ConflictData, DiffersInEachOfItsParts) {
    const ConflictData conflict(L"a", L"u", FileChange::added, FileChange::removed);
    const DiffHandles handles{{1}, {}, {}, {}, {}, {}};
    EXPECT_EQ(conflict, ConflictData(L"a", L"u", FileChange::added, FileChange::removed));
    EXPECT_NE(conflict, ConflictData(L"A", L"u", FileChange::added, FileChange::removed));
    EXPECT_NE(conflict, ConflictData(L"a", L"v", FileChange::added, FileChange::removed));
    EXPECT_NE(conflict, ConflictData(L"a", L"u", FileChange::modified, FileChange::removed));
    EXPECT_NE(conflict, ConflictData(L"a", L"u", FileChange::added, FileChange::added));
    EXPECT_NE(conflict, ConflictData(L"a", L"u", FileChange::added, FileChange::removed, handles));
}

}  // namespace
