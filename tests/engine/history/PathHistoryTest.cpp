#include <engine/history/PathHistory.h>
#include <tests/engine/history/Repository.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using qrv::CommitEntry;
using qrv_test::file;
using qrv_test::removal;
using qrv_test::Repository;

/// The messages of the commits, newest first.
std::string changing(Repository& repository, const OdString& start, const wchar_t* path) {
    std::string messages;
    for (const CommitEntry& commit :
         commitsThatChanged(repository.history, repository.history.ancestors(start), path))
        messages += commit.message.toNarrow() + ' ';
    return messages;
}

TEST(CommitsThatChanged, AreThoseOfTheFile) {
    Repository repository;
    const OdString one = repository.add({}, "both", {file("a", 'a'), file("b", 'b')});
    const OdString two = repository.add({one}, "b", {file("b", 'c')});
    const OdString three = repository.add({two}, "a", {file("a", 'c')});
    const OdString four = repository.add({three}, "gone", {removal("a")});
    EXPECT_EQ(changing(repository, four, L"a"), "gone a both ");
    EXPECT_EQ(changing(repository, two, L"a"), "both ");
    EXPECT_EQ(changing(repository, four, L"b"), "b both ");
    EXPECT_EQ(changing(repository, four, L"c"), "");
    EXPECT_EQ(changing(repository, {}, L"a"), "");
}

TEST(CommitsThatChanged, IncludeThoseUnderFormerNames) {
    Repository repository;
    const OdString one = repository.add({}, "a", {file("a", 'a'), file("x", 'a')});
    const OdString two = repository.add({one}, "to-b", {file("b", 'a', 1, "a"), removal("a")});
    const OdString three = repository.add({two}, "new-a", {file("a", 'd')});
    const OdString four = repository.add({three}, "b", {file("b", 'b')});
    const OdString five =
        repository.add({four}, "to-c", {file("sub/c", 'b', 1, "b"), removal("b")});
    EXPECT_EQ(changing(repository, five, L"sub/c"), "to-c b to-b a ");
    // The name's other bearer is another file.
    EXPECT_EQ(changing(repository, five, L"a"), "new-a to-b a ");
    EXPECT_EQ(changing(repository, five, L"x"), "a ");
}

TEST(CommitsThatChanged, AreFoundOnBothSidesOfAMerge) {
    Repository repository;
    const OdString base = repository.add({}, "base", {file("old", 'a')});
    const OdString side = repository.add({base}, "side", {file("old", 'b')});
    const OdString other = repository.add({base}, "other", {file("z", 'c')});
    const OdString renamed =
        repository.add({side}, "rename", {file("new", 'b', 1, "old"), removal("old")});
    const OdString after = repository.add({renamed}, "after", {file("new", 'd')});
    const OdString merged =
        repository.add({other, after}, "merge", {file("new", 'b', 1, "old"), removal("old")});
    EXPECT_EQ(changing(repository, merged, L"new"), "merge after rename side base ");
    EXPECT_EQ(changing(repository, merged, L"z"), "other ");
}

TEST(CommitsThatChanged, LeaveOutWhatIsNoAncestor) {
    Repository repository;
    const OdString base = repository.add({}, "base", {file("a", 'a')});
    repository.add({base}, "side", {file("a", 'b')});
    const OdString other = repository.add({base}, "other", {file("a", 'c')});
    EXPECT_EQ(changing(repository, other, L"a"), "other base ");
}

TEST(CommitsThatChanged, AreThoseOfAFolder) {
    Repository repository;
    const OdString one = repository.add({}, "in", {file("plans/a", 'a')});
    const OdString two = repository.add({one}, "beside", {file("plans2", 'b')});
    const OdString three =
        repository.add({two}, "out", {file("a", 'a', 1, "plans/a"), removal("plans/a")});
    const OdString four = repository.add({three}, "outside", {file("a", 'c')});
    EXPECT_EQ(changing(repository, four, L"plans"), "out in ");
    EXPECT_EQ(changing(repository, four, L""), "outside out beside in ");
}

}  // namespace
