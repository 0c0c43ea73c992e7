#include <tests/engine/history/Repository.h>

#include <gmock/gmock.h>

#include <string>

namespace {

using qrv::CommitEntry;
using qrv::FileDelta;
using qrv::NewCommit;
using qrv_test::file;
using qrv_test::newCommit;
using qrv_test::removal;
using qrv_test::Repository;
using testing::ElementsAre;

std::vector<std::int64_t> numbersOf(const std::vector<CommitEntry>& entries) {
    std::vector<std::int64_t> numbers;
    for (const CommitEntry& entry : entries)
        numbers.push_back(entry.number);
    return numbers;
}

TEST(Commits, AreFoundByHashAndByNumber) {
    Repository repository;
    const NewCommit first = {{}, L"Ada", L"one", 0, {}};
    const CommitEntry one = repository.history.add(first);
    const CommitEntry two =
        repository.history.add({{one.hash}, L"Bob", L"two\nlines", 253402300799, {}});
    EXPECT_EQ(one, (CommitEntry{1, hashOf(first), {}, L"Ada", L"one", 0}));
    EXPECT_EQ(two, (CommitEntry{2, two.hash, {one.hash}, L"Bob", L"two\nlines", 253402300799}));
    EXPECT_EQ(repository.history.commit(one.hash), one);
    EXPECT_EQ(repository.history.commitByNumber(2), two);
    EXPECT_EQ(repository.history.lastNumber(), 2);
    for (const OdString& hash : {OdString(), one.hash.left(63), OdString(L"none")})
        EXPECT_EQ(repository.history.commit(hash), std::nullopt);
    for (const std::int64_t number : {-1, 0, 3})
        EXPECT_EQ(repository.history.commitByNumber(number), std::nullopt);
}

TEST(Commits, SurviveTheProcess) {
    Repository repository;
    const CommitEntry one = repository.history.add(newCommit({}, "one", {file("a", '1')}));
    auto reader = qrv::History::open(repository.root, qrv::Database::Access::readOnly);
    EXPECT_EQ(reader.commit(one.hash), one);
    EXPECT_EQ(reader.deltas(one.hash), std::vector<FileDelta>{file("a", '1')});
}

TEST(Commits, KeepTheOrderOfTheirParents) {
    Repository repository;
    const OdString one = repository.add({}, "one");
    const OdString two = repository.add({}, "two");
    const OdString merge = repository.add({two, one}, "merge");
    EXPECT_THAT(repository.history.commit(merge)->parents, ElementsAre(two, one));
}

TEST(Commits, KeepAnyText) {
    Repository repository;
    const std::string bytes = std::string("NUL \0, bytes \xFF\xC3, ", 17) + "\U0001F4D0";
    NewCommit commit = newCommit({}, "", {});
    commit.message = OdString::fromNarrow(bytes);
    commit.author = OdString();
    const CommitEntry entry = repository.history.add(commit);
    EXPECT_EQ(entry.message.toNarrow(), bytes);
    EXPECT_EQ(entry.author, OdString());
}

TEST(Commits, AreFoundByTheBeginningOfTheirHashes) {
    Repository repository;
    const qrv::DatabaseTransaction transaction(repository.history.database());
    std::vector<CommitEntry> all;
    for (int i = 0; i < 40; ++i)
        all.push_back(repository.history.add(newCommit({}, std::to_string(i).c_str())));
    for (const char digit : std::string("0123456789abcdef")) {
        const OdString prefix(static_cast<wchar_t>(digit) + std::wstring());
        std::vector<std::int64_t> expected;
        for (const CommitEntry& entry : all) {
            if (entry.hash.left(1) == prefix)
                expected.push_back(entry.number);
        }
        EXPECT_EQ(numbersOf(repository.history.commitsByPrefix(prefix, 100)), expected) << digit;
        EXPECT_LE(repository.history.commitsByPrefix(prefix, 1).size(), 1U);
    }
    EXPECT_EQ(repository.history.commitsByPrefix(all[7].hash, 2), std::vector<CommitEntry>{all[7]});
    EXPECT_EQ(numbersOf(repository.history.commitsByPrefix(OdString(), 3)),
              (std::vector<std::int64_t>{1, 2, 3}));
    EXPECT_TRUE(repository.history.commitsByPrefix(all[7].hash + L"0", 2).empty());
}

TEST(Commits, GiveTheirDeltasInTheOrderOfTheirPaths) {
    Repository repository;
    // Bytes order the last two the other way round.
    const FileDelta smiling = file("\U0001F600.txt", '3');
    const FileDelta fullWidth = file("\uFF21.txt", '4');
    const OdString hash =
        repository.add({}, "one", {fullWidth, removal("z"), file("b", '1', 20, "old b"), smiling});
    EXPECT_THAT(repository.history.deltas(hash),
                ElementsAre(file("b", '1', 20, "old b"), removal("z"), smiling, fullWidth));
    EXPECT_EQ(repository.complaint([&] { repository.history.deltas(L"none"); }),
              "The history 'DB' has no commit 'none'");
}

TEST(Commits, OfAPathAreToldNewestFirst) {
    Repository repository;
    const OdString one = repository.add({}, "one", {file("a", '1'), file("c", '1')});
    const OdString two = repository.add({one}, "two", {file("c", '2')});
    const OdString three = repository.add({two}, "three", {file("b", '1', 1, "a"), removal("a")});
    repository.add({three}, "four", {removal("c")});
    EXPECT_THAT(repository.history.commitsOfPath(L"a"), ElementsAre(3, 1));
    EXPECT_THAT(repository.history.commitsOfPath(L"b"), ElementsAre(3));
    EXPECT_THAT(repository.history.commitsOfPath(L"c"), ElementsAre(4, 2, 1));
    EXPECT_THAT(repository.history.commitsOfPath(L"d"), ElementsAre());
}

TEST(Commits, ThatAreThereAreNotAddedTwice) {
    Repository repository;
    const NewCommit commit = newCommit({}, "one", {file("a", '1')});
    const CommitEntry first = repository.history.add(commit);
    EXPECT_EQ(repository.history.add(commit), first);
    EXPECT_EQ(repository.history.lastNumber(), 1);
}

TEST(Commits, ThatCouldNotBeReadBackAreRefusedAsAWhole) {
    Repository repository;
    const OdString one = repository.add({}, "one");
    const auto complaint = [&](const NewCommit& commit) {
        return repository.complaint([&] { repository.history.add(commit); });
    };
    NewCommit late = newCommit({}, "late");
    late.timeSeconds = 253402300800;
    EXPECT_EQ(complaint(late),
              "The history 'DB' cannot keep this: 253402300800 is no time of a commit");
    NewCommit early = newCommit({}, "early");
    early.timeSeconds = -62135596801;
    EXPECT_EQ(complaint(early),
              "The history 'DB' cannot keep this: -62135596801 is no time of a commit");
    EXPECT_EQ(complaint(newCommit({one, one}, "twice")),
              "The history 'DB' cannot keep this: a commit builds on another one twice");
    EXPECT_EQ(complaint(newCommit({L"none"}, "orphan")), "The history 'DB' has no commit 'none'");
    FileDelta unsafe = file("a", '1');
    unsafe.url = L"po:../x";
    EXPECT_EQ(complaint(newCommit({one}, "outside", {unsafe})),
              "The history 'DB' cannot keep this: 'po:../x' does not name a stored version");
    EXPECT_EQ(complaint(newCommit({one}, "size", {file("a", '1', -1)})),
              "The history 'DB' cannot keep this: -1 is no size of a file");
    EXPECT_EQ(complaint(newCommit({one}, "twice", {file("a", '1'), file("a", '2')})),
              "The database 'DB' cannot be used: UNIQUE constraint failed: changes.number, "
              "changes.path");
    EXPECT_EQ(repository.history.lastNumber(), 1);
    EXPECT_TRUE(repository.history.deltas(one).empty());
}

}  // namespace
