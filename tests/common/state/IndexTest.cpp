#include <common/state/Cache.h>
#include <common/state/Index.h>
#include <tests/common/state/StateRepository.h>
#include <tests/support/Files.h>
#include <tests/support/RecordingIo.h>

#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

namespace {

namespace fs = std::filesystem;

using common::Cache;
using common::ConflictData;
using common::DiffHandles;
using common::FileChange;
using common::IndexData;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr std::int64_t secondsFrom1601To1970 = 11'644'473'600;

std::int64_t ticks(std::int64_t unixSeconds) {
    return (unixSeconds + secondsFrom1601To1970) * 10'000'000;
}

class IndexTest : public testing::Test {
protected:
    IndexTest() {
        repository.writeStateFile(qrv_test::stateSample("default"));
        cache = Cache::get(repository.root(), io).value();
    }

    void makeFile(const std::string& path, std::int64_t unixSeconds) const {
        qrv_test::writeFile(repository / path, "content");
        const std::chrono::sys_seconds time{std::chrono::seconds(unixSeconds)};
        fs::last_write_time(repository / path, std::chrono::file_clock::from_sys(time));
    }
    const std::map<OdString, IndexData>& index() const { return cache->read().index; }
    /// Ends the cache. True when it was marked as changed.
    bool wasMarked() {
        cache.reset();
        return !io.results.empty();
    }

    qrv_test::StateRepository repository;
    qrv_test::RecordingIo io;
    std::shared_ptr<Cache> cache;
};

TEST_F(IndexTest, TellsAFilesTimeInTicks) {
    makeFile("site/plan.dwg", 1'700'000'000);
    EXPECT_EQ(common::modifyTime(L"site/plan.dwg", repository.root()), 133'444'736'000'000'000);
    makeFile("old.dwg", -1);
    EXPECT_EQ(common::modifyTime(L"old.dwg", repository.root()), ticks(-1));
}

TEST_F(IndexTest, TellsZeroForAFileThatCannotBeAsked) {
    EXPECT_EQ(common::modifyTime(L"missing.dwg", repository.root()), 0);
    EXPECT_EQ(common::modifyTime(L"missing/plan.dwg", repository.root()), 0);
    EXPECT_EQ(common::modifyTime(OdString(std::wstring(L"a\0b", 3)), repository.root()), 0);
}

TEST_F(IndexTest, GainsAnEntryThatALaterCallRefreshes) {
    makeFile("a", 1'000);
    common::updateIndex(L"a", *cache, repository.root(), true);
    EXPECT_THAT(index(), ElementsAre(Pair(OdString(L"a"), IndexData{ticks(1'000), true})));
    makeFile("a", 2'000);
    common::updateIndex(L"a", *cache, repository.root(), false);
    EXPECT_THAT(index(), ElementsAre(Pair(OdString(L"a"), IndexData{ticks(2'000), false})));
    EXPECT_TRUE(wasMarked());
    EXPECT_THAT(qrv_test::load(repository).index,
                ElementsAre(Pair(OdString(L"a"), IndexData{ticks(2'000), false})));
}

TEST_F(IndexTest, TakesPathsExactly) {
    makeFile("a", 1'000);
    makeFile("A", 2'000);
    common::updateIndex(L"a", *cache, repository.root(), true);
    common::updateIndex(L"A", *cache, repository.root(), true);
    common::updateIndex(L"./a", *cache, repository.root(), true);
    EXPECT_THAT(index(), ElementsAre(Pair(OdString(L"./a"), IndexData{ticks(1'000), true}),
                                     Pair(OdString(L"A"), IndexData{ticks(2'000), true}),
                                     Pair(OdString(L"a"), IndexData{ticks(1'000), true})));
    common::removeIndex(L"A", *cache);
    EXPECT_THAT(index(), ElementsAre(Pair(OdString(L"./a"), IndexData{ticks(1'000), true}),
                                     Pair(OdString(L"a"), IndexData{ticks(1'000), true})));
}

TEST_F(IndexTest, NotesAMissingFileWithTimeZero) {
    common::updateIndex(L"gone", *cache, repository.root(), true);
    EXPECT_THAT(index(), ElementsAre(Pair(OdString(L"gone"), IndexData{0, true})));
}

TEST_F(IndexTest, LosesAnEntry) {
    common::updateIndex(L"a", *cache, repository.root(), true);
    common::removeIndex(L"a", *cache);
    EXPECT_THAT(index(), IsEmpty());
}

TEST_F(IndexTest, IsMarkedByARemovalOfNothing) {
    common::removeIndex(L"nothing", *cache);
    EXPECT_TRUE(wasMarked());
}

TEST_F(IndexTest, CanLoseAnEntryByItsOwnKey) {
    common::updateIndex(L"a rather long path of a drawing.dwg", *cache, repository.root(), true);
    common::removeIndex(index().begin()->first, *cache);
    EXPECT_THAT(index(), IsEmpty());
}

TEST_F(IndexTest, FollowsACommitOfTheStagedFiles) {
    makeFile("a", 1'000);
    makeFile("b", 2'000);
    makeFile("c", 3'000);
    makeFile("d", 4'000);
    makeFile("untouched", 5'000);
    for (const wchar_t* path : {L"b", L"c", L"untouched"})
        common::updateIndex(path, *cache, repository.root(), true);
    makeFile("c", 6'000);
    cache->write().stagedFiles = {{L"a", FileChange::added},
                                  {L"b", FileChange::removed},
                                  {L"c", FileChange::modified},
                                  {L"d", FileChange::unchanged},
                                  {L"never known", FileChange::removed}};
    const auto staged = cache->read().stagedFiles;
    common::updateIndex(*cache, repository.root());
    EXPECT_THAT(index(), ElementsAre(Pair(OdString(L"a"), IndexData{ticks(1'000), false}),
                                     Pair(OdString(L"c"), IndexData{ticks(6'000), false}),
                                     Pair(OdString(L"d"), IndexData{ticks(4'000), false}),
                                     Pair(OdString(L"untouched"), IndexData{ticks(5'000), true})));
    EXPECT_EQ(cache->read().stagedFiles, staged);
}

TEST_F(IndexTest, TakesStagedFilesInTheirOrder) {
    makeFile("a", 1'000);
    cache->write().stagedFiles = {{L"a", FileChange::added},
                                  {L"a", FileChange::removed},
                                  {L"b", FileChange::removed},
                                  {L"b", FileChange::added}};
    common::updateIndex(*cache, repository.root());
    EXPECT_THAT(index(), ElementsAre(Pair(OdString(L"b"), IndexData{0, false})));
}

TEST_F(IndexTest, IsMarkedByACommitOfAnyStagedFile) {
    repository.writeStateFile(
        R"({"head":{"reference":"m"},"staged_files":[{"path":"x","file_change":"removed"}]})");
    cache = Cache::get(repository.root(), io).value();
    common::updateIndex(*cache, repository.root());
    EXPECT_TRUE(wasMarked());
}

TEST_F(IndexTest, IsNotMarkedByACommitOfNothing) {
    common::updateIndex(*cache, repository.root());
    EXPECT_FALSE(wasMarked());
}

TEST_F(IndexTest, OpensAnEntryForWriting) {
    repository.writeStateFile(qrv_test::stateSample("full"));
    cache = Cache::get(repository.root(), io).value();
    const auto entry = index().find(L"site/plan.dwg");
    common::openForWrite(entry, *cache)->second = IndexData{5, false};
    EXPECT_EQ(entry->second, (IndexData{5, false}));
    EXPECT_EQ(index().size(), 3u);
    EXPECT_TRUE(wasMarked());
    EXPECT_EQ(qrv_test::load(repository).index.at(L"site/plan.dwg"), (IndexData{5, false}));
}

TEST_F(IndexTest, IsMarkedByOpeningItsEnd) {
    EXPECT_EQ(common::openForWrite(index().end(), *cache), index().end());
    EXPECT_TRUE(wasMarked());
}

TEST_F(IndexTest, ReplacesAConflictOfTheSamePathInItsPlace) {
    const DiffHandles handles{{1}, {2}, {3}, {4}, {}, {}};
    const ConflictData first(L"a", L"1", FileChange::added, FileChange::removed);
    const ConflictData second(L"b", L"2", FileChange::added, FileChange::added);
    const ConflictData third(L"A", L"3", FileChange::added, FileChange::added);
    const ConflictData newer(L"a", L"4", FileChange::modified, FileChange::modified, handles);
    for (const ConflictData& conflict : {first, second, third, newer})
        common::updateConflictData(*cache, conflict);
    EXPECT_THAT(cache->read().conflicts, ElementsAre(newer, second, third));
    EXPECT_TRUE(wasMarked());
    EXPECT_THAT(qrv_test::load(repository).conflicts, ElementsAre(newer, second, third));
}

TEST_F(IndexTest, ReplacesOnlyTheFirstOfSeveralConflictsOfOnePath) {
    const ConflictData first(L"a", L"1", FileChange::added, FileChange::added);
    const ConflictData second(L"a", L"2", FileChange::added, FileChange::added);
    const ConflictData newer(L"a", L"3", FileChange::removed, FileChange::added);
    cache->write().conflicts = {first, second};
    common::updateConflictData(*cache, newer);
    EXPECT_THAT(cache->read().conflicts, ElementsAre(newer, second));
}

}  // namespace
