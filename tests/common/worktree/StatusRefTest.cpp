#include <common/state/ConflictData.h>
#include <common/worktree/StatusRef.h>

#include <gmock/gmock.h>

#include <type_traits>
#include <utility>

using common::ConflictData;
using common::FileChange;
using common::StatusRef;

static_assert(std::is_abstract_v<common::StatusImp>);
static_assert(std::has_virtual_destructor_v<common::StatusImp>);

namespace {

/// A status of the same path and change as another, but of another kind.
class ForeignStatus : public common::StatusImp {
public:
    OdString path() const override { return L"a"; }
    FileChange status() const override { return FileChange::added; }
    std::shared_ptr<ConflictData>& conflictInfo() override { return conflict_; }
    bool operator==(const StatusImp&) const override { return true; }

private:
    std::shared_ptr<ConflictData> conflict_;
};

std::shared_ptr<ConflictData> someConflict() {
    return std::make_shared<ConflictData>(L"a", L"url", FileChange::added, FileChange::modified);
}

}  // namespace

TEST(StatusRef, IsMadeSelectedWithoutAConflict) {
    const StatusRef status(L"a/b", FileChange::removed);
    EXPECT_EQ(status.path(), L"a/b");
    EXPECT_EQ(status.status(), FileChange::removed);
    EXPECT_EQ(status.conflictInfo(), nullptr);
    EXPECT_TRUE(status.selected);
}

TEST(StatusRef, HoldsTheConflictThatIsAssigned) {
    StatusRef status(L"a", FileChange::added);
    const std::shared_ptr<ConflictData> conflict = someConflict();
    status.conflictInfo() = conflict;
    EXPECT_EQ(std::as_const(status).conflictInfo(), conflict);
    EXPECT_EQ(conflict.use_count(), 2);
}

TEST(StatusRef, SharesItsStatusWithCopiesButNotTheSelection) {
    StatusRef status(L"a", FileChange::added);
    StatusRef copy = status;
    copy.conflictInfo() = someConflict();
    copy.selected = false;
    EXPECT_EQ(status.imp, copy.imp);
    EXPECT_NE(status.conflictInfo(), nullptr);
    EXPECT_TRUE(status.selected);
    StatusRef assigned(L"b", FileChange::removed);
    assigned = copy;
    EXPECT_EQ(assigned.imp, status.imp);
    EXPECT_FALSE(assigned.selected);
}

TEST(StatusRef, IsLeftWithoutAStatusByAMove) {
    StatusRef status(L"a", FileChange::added);
    status.selected = false;
    StatusRef moved = std::move(status);
    EXPECT_EQ(status.imp, nullptr);
    EXPECT_EQ(moved.path(), L"a");
    EXPECT_FALSE(moved.selected);
    StatusRef assigned(L"b", FileChange::removed);
    assigned = std::move(moved);
    EXPECT_EQ(moved.imp, nullptr);
    EXPECT_EQ(assigned.path(), L"a");
}

TEST(StatusRef, IsEqualByPathAndChangeOnly) {
    StatusRef status(L"a", FileChange::added);
    status.conflictInfo() = someConflict();
    status.selected = false;
    EXPECT_TRUE(status == StatusRef(L"a", FileChange::added));
    EXPECT_TRUE(StatusRef(L"a", FileChange::added) == status);
    EXPECT_FALSE(status == StatusRef(L"A", FileChange::added));
    EXPECT_FALSE(status == StatusRef(L"a", FileChange::unchanged));
}

TEST(StatusRef, AsksItsOwnStatusForEquality) {
    const StatusRef status(L"a", FileChange::added);
    StatusRef foreign = status;
    foreign.imp = std::make_shared<ForeignStatus>();
    EXPECT_FALSE(status == foreign);
    EXPECT_TRUE(foreign == status);
}

TEST(StatusRef, WithoutAStatusEqualsOnlyItsLike) {
    StatusRef first(L"a", FileChange::added);
    StatusRef second(L"b", FileChange::removed);
    const StatusRef kept = std::move(first);
    EXPECT_FALSE(first == kept);
    EXPECT_FALSE(kept == first);
    const StatusRef alsoKept = std::move(second);
    EXPECT_TRUE(first == second);
    EXPECT_FALSE(kept == alsoKept);
}
