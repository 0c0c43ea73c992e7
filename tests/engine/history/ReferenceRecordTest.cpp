#include <engine/history/HistoryRecords.h>
#include <platform/kernel/Clock.h>
#include <tests/engine/history/Repository.h>
#include <tests/support/Effort.h>
#include <tests/support/Files.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using qrv_cli::RecordedMove;
using qrv_cli::RecordState;
using qrv_cli::ReferenceRecord;
using qrv_test::file;
using qrv_test::Repository;

OdString hash(char digit) {
    return OdString(std::wstring(64, static_cast<wchar_t>(digit)));
}

std::vector<RecordedMove> exampleMoves() {
    return {{1, 1709647629, common::RefType::Branch, L"master", {}, hash('1'), "commit"},
            {2, 1709647630, common::RefType::Tag, L"v1", {}, hash('1'), "tag"},
            {3, 1709647700, common::RefType::Branch, L"master", hash('1'), hash('2'), "commit"},
            {4, 1709647800, common::RefType::Tag, L"v1", hash('1'), {}, "tag"}};
}

struct Recorded : Repository {
    sys::Folder root() const { return *sys::Folder::open(folder.path()); }
    std::string path() const { return folder / ".qrv/references"; }
    ReferenceRecord read() const { return *ReferenceRecord::read(root()); }
};

TEST(ReferenceRecord, IsEmptyWhereThereIsNone) {
    const Recorded repository;
    const ReferenceRecord record = repository.read();
    EXPECT_FALSE(record.isThere());
    EXPECT_TRUE(record.moves().empty());
    EXPECT_EQ(record.damagedLine(), 0);
    EXPECT_EQ(record.generation(), 0);
}

TEST(ReferenceRecord, HasTheFormOfTheSampleAndReadsItBack) {
    const Recorded repository;
    ReferenceRecord record = repository.read();
    ASSERT_TRUE(record.append(exampleMoves(), repository.root()));
    EXPECT_EQ(qrv_test::readFile(repository.path()),
              qrv_test::readFile(QRV_HISTORY_SAMPLES "/references.sample"));
    const ReferenceRecord again = repository.read();
    EXPECT_EQ(again.moves(), exampleMoves());
    EXPECT_EQ(again.damagedLine(), 0);
    EXPECT_EQ(again.generation(), 4);
    EXPECT_EQ(again.references(),
              (qrv_cli::ReferenceMap{{{common::RefType::Branch, L"master"}, hash('2')}}));
}

TEST(ReferenceRecord, GrowsAtItsEndOnly) {
    const Recorded repository;
    std::string before;
    for (const RecordedMove& move : exampleMoves()) {
        ReferenceRecord record = repository.read();
        ASSERT_TRUE(record.append({move}, repository.root()));
        const std::string now = qrv_test::readFile(repository.path());
        EXPECT_EQ(now.substr(0, before.size()), before);
        before = now;
    }
    EXPECT_EQ(before, qrv_test::readFile(QRV_HISTORY_SAMPLES "/references.sample"));
}

TEST(ReferenceRecord, KnowsEachFlippedByteAndEachMissingLine) {
    const Recorded repository;
    const std::string bytes = qrv_test::readFile(QRV_HISTORY_SAMPLES "/references.sample");
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        std::string flipped = bytes;
        flipped[at] = static_cast<char>(flipped[at] ^ 1);
        qrv_test::writeFile(repository.path(), flipped);
        EXPECT_GT(repository.read().damagedLine(), 0) << at;
    }
    qrv_test::tellTried(bytes.size(), "flipped bytes");
    const std::size_t second = bytes.find('\n') + 1;
    const std::size_t third = bytes.find('\n', second) + 1;
    qrv_test::writeFile(repository.path(), bytes.substr(0, second) + bytes.substr(third));
    EXPECT_EQ(repository.read().damagedLine(), 2);
    qrv_test::writeFile(repository.path(), bytes.substr(0, bytes.size() - 1));
    EXPECT_EQ(repository.read().damagedLine(), 5);
    EXPECT_EQ(repository.read().moves().size(), 3U);
}

TEST(ReferenceRecord, GivesUpDamagedLinesWhenItGrows) {
    const Recorded repository;
    qrv_test::writeFile(repository.path(),
                        qrv_test::readFile(QRV_HISTORY_SAMPLES "/references.sample") + "x\n");
    ReferenceRecord record = repository.read();
    EXPECT_EQ(record.damagedLine(), 6);
    ASSERT_TRUE(record.append({exampleMoves().front()}, repository.root()));
    EXPECT_EQ(repository.read().damagedLine(), 0);
    EXPECT_EQ(repository.read().moves().size(), 5U);
}

TEST(ReferenceRecord, FollowsTheHistory) {
    const kernel::ScopedClock clock(1709647629000);
    Recorded repository;
    const auto state = [&] { return stateOf(repository.read(), repository.history); };
    const auto update = [&] {
        ReferenceRecord record = repository.read();
        ASSERT_TRUE(updateRecords(record, 1, "test", repository.history, repository.root()));
    };
    EXPECT_EQ(state(), RecordState::behind);
    const OdString one = repository.add({}, "one", {file("a", '1')});
    repository.history.setReference(L"master", common::RefType::Branch, one);
    EXPECT_EQ(state(), RecordState::behind);
    update();
    EXPECT_EQ(state(), RecordState::same);
    EXPECT_EQ(repository.read().moves(),
              (std::vector<RecordedMove>{
                  {1, 1709647629, common::RefType::Branch, L"master", {}, one, "test"}}));
    const std::string older = qrv_test::readFile(repository.folder / ".qrv/qrv.db");
    repository.history.setReference(L"v1", common::RefType::Tag, one);
    EXPECT_EQ(state(), RecordState::behind);
    EXPECT_TRUE(checkNotOlder(repository.read(), repository.history));
    update();
    qrv_test::writeFile(repository.folder / ".qrv/qrv.db", older);
    qrv_cli::History restored =
        qrv_cli::History::open(repository.Repository::root, qrv_cli::Database::Access::readOnly);
    EXPECT_EQ(stateOf(repository.read(), restored), RecordState::ahead);
    EXPECT_EQ(repository.withoutPath(checkNotOlder(repository.read(), restored).error().message),
              "The history 'DB' is older than what '.qrv/references' tells, which ends with 'v1' "
              "at " +
                  one.left(10).toNarrow() +
                  " (2024-03-05 14:07:09 UTC). Bring the newer history back, or let qrv recover "
                  "--history take what was recorded");
}

}  // namespace
