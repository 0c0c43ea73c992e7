#include <common/worktree/File.h>

#include <gmock/gmock.h>

#include <type_traits>
#include <utility>

using common::File;
using common::FileChange;
using common::RepoFile;
using common::StagedFile;

static_assert(std::is_polymorphic_v<File> && std::has_virtual_destructor_v<File>);
static_assert(std::is_base_of_v<File, RepoFile> && std::has_virtual_destructor_v<RepoFile>);
static_assert(!std::is_convertible_v<OdString, File>);
static_assert(std::is_nothrow_move_constructible_v<File>);

namespace {

struct CountedFile : File {
    explicit CountedFile(int& destroyed) : destroyed_(destroyed) {}
    ~CountedFile() override { ++destroyed_; }
    int& destroyed_;
};

}  // namespace

TEST(File, HoldsAPath) {
    EXPECT_EQ(File().path, L"");
    EXPECT_EQ(File(L"a/plan.dwg").path, L"a/plan.dwg");
}

TEST(RepoFile, KeepsPathAndUrlVerbatim) {
    const RepoFile file(L"a/plan.dwg", L"tf:plan#3 ");
    EXPECT_EQ(file.path, L"a/plan.dwg");
    EXPECT_EQ(file.url, L"tf:plan#3 ");
    EXPECT_EQ(file.file, nullptr);
}

TEST(RepoFile, TakesOverThePreviousIdentity) {
    auto previous = std::make_unique<File>(L"old.dwg");
    const File* address = previous.get();
    const RepoFile file(L"new.dwg", L"url", std::move(previous));
    EXPECT_EQ(previous, nullptr);
    EXPECT_EQ(file.file.get(), address);
    EXPECT_EQ(file.file->path, L"old.dwg");
}

TEST(RepoFile, HasNoPreviousIdentityWhenGivenNone) {
    EXPECT_EQ(RepoFile(L"a", L"b", nullptr).file, nullptr);
}

TEST(RepoFile, SharesThePreviousIdentityWithItsCopies) {
    int destroyed = 0;
    {
        RepoFile assigned(L"x", L"y");
        {
            const RepoFile file(L"new", L"url", std::make_unique<CountedFile>(destroyed));
            const RepoFile copy = file;
            assigned = copy;
            EXPECT_EQ(copy.file, file.file);
            EXPECT_EQ(file.file.use_count(), 3);
        }
        EXPECT_EQ(destroyed, 0);
        EXPECT_EQ(assigned.path, L"new");
        EXPECT_EQ(assigned.url, L"url");
        EXPECT_EQ(assigned.file.use_count(), 1);
    }
    EXPECT_EQ(destroyed, 1);
}

TEST(StagedFile, IsEqualByPathAndChange) {
    const StagedFile file(L"a", FileChange::modified);
    EXPECT_EQ(file.path, L"a");
    EXPECT_EQ(file.change, FileChange::modified);
    EXPECT_TRUE(file == StagedFile(L"a", FileChange::modified));
    EXPECT_FALSE(file == StagedFile(L"A", FileChange::modified));
    EXPECT_FALSE(file == StagedFile(L"a", FileChange::added));
}

TEST(StagedFile, IsAValue) {
    StagedFile file(L"a", FileChange::removed);
    const StagedFile copy = file;
    StagedFile other(L"b", FileChange::added);
    other = std::move(file);
    EXPECT_TRUE(other == copy);
}
