#include <engine/history/HistoryRecords.h>
#include <engine/paths/Layout.h>
#include <platform/kernel/Clock.h>
#include <sys/ScopedFault.h>
#include <tests/engine/history/Repository.h>
#include <tests/support/Effort.h>
#include <tests/support/Files.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace {

using qrv::RecordedMove;
using qrv::RecordState;
using qrv::ReferenceRecord;
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

/// Where they lead.
qrv::ReferenceMap examplePlaces() {
    return {{{common::RefType::Branch, L"master"}, hash('2')}};
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
    EXPECT_EQ(again.references(), examplePlaces());
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
        const ReferenceRecord record = repository.read();
        // Without its end the last line does not count.
        if (at + 1 == bytes.size())
            EXPECT_EQ(record.moves().size(), 3U);
        else
            EXPECT_GT(record.damagedLine(), 0) << at;
    }
    qrv_test::tellTried(bytes.size(), "flipped bytes");
    const std::size_t second = bytes.find('\n') + 1;
    const std::size_t third = bytes.find('\n', second) + 1;
    qrv_test::writeFile(repository.path(), bytes.substr(0, second) + bytes.substr(third));
    EXPECT_EQ(repository.read().damagedLine(), 2);
}

TEST(ReferenceRecord, TakesTheLinesBehindADamagedOne) {
    const Recorded repository;
    std::string bytes = qrv_test::readFile(QRV_HISTORY_SAMPLES "/references.sample");
    bytes[bytes.find("tag")] = 'T';
    qrv_test::writeFile(repository.path(), bytes);
    const ReferenceRecord record = repository.read();
    EXPECT_EQ(record.damagedLine(), 3);
    std::vector<RecordedMove> expected = exampleMoves();
    expected.erase(expected.begin() + 1);
    EXPECT_EQ(record.moves(), expected);
    EXPECT_EQ(record.references(), examplePlaces());
}

TEST(ReferenceRecord, IgnoresALineWithoutAnEndUntilItGrows) {
    const std::string bytes = qrv_test::readFile(QRV_HISTORY_SAMPLES "/references.sample");
    const std::size_t lastLine = bytes.rfind('\n', bytes.size() - 2) + 1;
    const Recorded repository;
    for (std::size_t size = lastLine + 1; size < bytes.size(); ++size) {
        qrv_test::writeFile(repository.path(), bytes.substr(0, size));
        ReferenceRecord record = repository.read();
        EXPECT_EQ(record.damagedLine(), 0) << size;
        EXPECT_EQ(record.moves().size(), 3U) << size;
        EXPECT_FALSE(ReferenceRecord::readEnd(repository.root(), 3, record.references())) << size;
        ASSERT_TRUE(record.append({exampleMoves().back()}, repository.root()));
        ASSERT_EQ(qrv_test::readFile(repository.path()), bytes) << size;
    }
}

// The numbers of files tell a file that grew from one that was replaced.
TEST(ReferenceRecord, IsReplacedOnlyWhenItIsDamaged) {
    const Recorded repository;
    const auto number = [&] {
        return repository.root().stamp(qrv::layout::referenceRecordPath)->number;
    };
    qrv_test::writeFile(repository.path(),
                        qrv_test::readFile(QRV_HISTORY_SAMPLES "/references.sample"));
    const auto first = number();
    ReferenceRecord record = repository.read();
    ASSERT_TRUE(record.append({exampleMoves().front()}, repository.root()));
    EXPECT_EQ(number(), first);
    qrv_test::writeFile(repository.path(), qrv_test::readFile(repository.path()) + "x");
    record = repository.read();
    ASSERT_TRUE(record.append({exampleMoves().front()}, repository.root()));
    EXPECT_NE(number(), first);
    EXPECT_EQ(repository.read().moves().size(), 6U);
}

TEST(ReferenceRecord, StaysAsItWasWhenItCannotGrow) {
    const Recorded repository;
    const std::string bytes = qrv_test::readFile(QRV_HISTORY_SAMPLES "/references.sample");
    qrv_test::writeFile(repository.path(), bytes);
    const sys::Folder root = repository.root();
    ReferenceRecord record = repository.read();
    {
        const sys::ScopedFault fault(1, EIO);
        EXPECT_FALSE(record.append({exampleMoves().front()}, root));
    }
    EXPECT_EQ(qrv_test::readFile(repository.path()), bytes);
    // A colleague's file, which may be replaced but not written to.
    {
        const sys::ScopedFault fault(1, EACCES);
        EXPECT_TRUE(record.append({exampleMoves().front()}, root));
    }
    EXPECT_EQ(qrv_test::readFile(repository.path()).substr(0, bytes.size()), bytes);
    EXPECT_EQ(repository.read().moves().size(), 5U);
}

TEST(ReferenceRecord, TellsFromItsEndWhereReferencesPoint) {
    const Recorded repository;
    qrv::ReferenceMap expected;
    ReferenceRecord whole = repository.read();
    for (int count = 1; count <= 60; ++count) {
        const OdString name(("branch-" + std::to_string(count % 7)).c_str());
        const OdString to = hash(static_cast<char>('0' + count % 10));
        expected[{common::RefType::Branch, name}] = to;
        ASSERT_TRUE(whole.append({{count, 1, common::RefType::Branch, name, {}, to, "test"}},
                                 repository.root()));
        std::optional<ReferenceRecord> end =
            ReferenceRecord::readEnd(repository.root(), count, expected);
        ASSERT_TRUE(end) << count;
        EXPECT_EQ(end->references(), expected);
        EXPECT_LE(end->moves().size(), 40U);
    }
    const std::string bytes = qrv_test::readFile(repository.path());
    std::optional<ReferenceRecord> end = ReferenceRecord::readEnd(repository.root(), 60, expected);
    ASSERT_TRUE(end->append({{61, 1, common::RefType::Tag, L"v1", {}, hash('1'), "test"}},
                            repository.root()));
    EXPECT_EQ(qrv_test::readFile(repository.path()).substr(0, bytes.size()), bytes);
    EXPECT_EQ(repository.read().moves().size(), 61U);
    EXPECT_EQ(repository.read().damagedLine(), 0);
}

TEST(ReferenceRecord, TellsNothingFromAnEndThatIsDamagedOrLeadsElsewhere) {
    const Recorded repository;
    const auto endAt = [&](std::int64_t generation, const qrv::ReferenceMap& references) {
        return ReferenceRecord::readEnd(repository.root(), generation, references);
    };
    const std::string bytes = qrv_test::readFile(QRV_HISTORY_SAMPLES "/references.sample");
    EXPECT_FALSE(endAt(0, {}));
    qrv_test::writeFile(repository.path(), "");
    EXPECT_FALSE(endAt(0, {}));
    qrv_test::writeFile(repository.path(), bytes);
    EXPECT_TRUE(endAt(4, examplePlaces()));
    EXPECT_FALSE(endAt(3, examplePlaces()));
    EXPECT_FALSE(endAt(5, examplePlaces()));
    EXPECT_FALSE(endAt(4, {}));
    qrv::ReferenceMap other = examplePlaces();
    other[{common::RefType::Tag, L"v1"}] = hash('1');
    EXPECT_FALSE(endAt(4, other));
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        std::string flipped = bytes;
        flipped[at] = static_cast<char>(flipped[at] ^ 1);
        qrv_test::writeFile(repository.path(), flipped);
        EXPECT_FALSE(endAt(4, examplePlaces())) << at;
    }
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

// Symptom: after a power cut in the middle of a change of two references every command refused the
// history as older than the record.
// Cause: the first line had the generation of the second already.
TEST(ReferenceRecord, ThatEndsBetweenTwoLinesOfAChangeIsBehind) {
    Recorded repository;
    const OdString one = repository.add({}, "one", {file("a", '1')});
    repository.history.setReference(L"master", common::RefType::Branch, one);
    repository.history.setReference(L"other", common::RefType::Branch, one);
    ReferenceRecord record = repository.read();
    ASSERT_TRUE(updateRecords(record, 1, "test", repository.history, repository.root()));
    const std::string bytes = qrv_test::readFile(repository.path());
    qrv_test::writeFile(repository.path(),
                        bytes.substr(0, bytes.rfind('\n', bytes.size() - 2) + 1));
    record = repository.read();
    EXPECT_EQ(record.moves().size(), 1U);
    EXPECT_EQ(stateOf(record, repository.history), RecordState::behind);
    ASSERT_TRUE(checkedRecord(repository.history, repository.root()));
    ASSERT_TRUE(updateRecords(record, 1, "test", repository.history, repository.root()));
    EXPECT_EQ(stateOf(repository.read(), repository.history), RecordState::same);
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
    qrv::History restored =
        qrv::History::open(repository.Repository::root, qrv::Database::Access::readOnly);
    EXPECT_EQ(stateOf(repository.read(), restored), RecordState::ahead);
    EXPECT_EQ(repository.withoutPath(checkNotOlder(repository.read(), restored).error().message),
              "The history 'DB' is older than what '.qrv/references' tells, which ends with 'v1' "
              "at " +
                  one.left(10).toNarrow() +
                  " (2024-03-05 14:07:09 UTC). Bring the newer history back, or let qrv recover "
                  "--history take what was recorded");
}

}  // namespace
