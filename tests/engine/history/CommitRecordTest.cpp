#include <engine/history/CommitRecord.h>
#include <engine/history/HistoryRecords.h>
#include <tests/engine/history/Repository.h>
#include <tests/support/Files.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace {

using qrv::commitOfRecord;
using qrv::NewCommit;
using qrv::recordedCommit;
using qrv::recordedCommits;
using qrv::recordOf;
using qrv_test::file;
using qrv_test::Repository;

NewCommit example() {
    return {{OdString(std::wstring(64, L'7'))},
            L"Ada \x00E4\x4E2D",
            L"Turn\nthe \"Geh\x00E4use\"\tby 90\x00B0 \\ ",
            1709647629,
            {file("notes.txt", '2', 0, "readme.txt"), qrv_test::removal("old.dwg"),
             file("plan.dwg", '3', 0)}};
}

TEST(CommitRecord, IsReadBackAsItWasWritten) {
    for (const std::int64_t time : {std::int64_t{1709647629}, std::int64_t{0}, std::int64_t{-1},
                                    std::int64_t{-62135596800}, std::int64_t{253402300799}}) {
        NewCommit commit = example();
        commit.timeSeconds = time;
        const Expected<NewCommit> read = commitOfRecord(recordOf(commit));
        ASSERT_TRUE(read) << time;
        EXPECT_EQ(read->timeSeconds, time);
        EXPECT_EQ(read->parents, commit.parents);
        EXPECT_EQ(read->author, commit.author);
        EXPECT_EQ(read->message, commit.message);
        EXPECT_EQ(read->deltas, commit.deltas);
    }
}

TEST(CommitRecord, OfNothingIsReadBackToo) {
    const Expected<NewCommit> read = commitOfRecord(recordOf(NewCommit()));
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->deltas.empty());
    EXPECT_TRUE(read->parents.empty());
}

TEST(CommitRecord, ThatNobodyWroteIsRefused) {
    const std::string record = recordOf(example());
    for (const std::string& text :
         {std::string(), std::string("{}"), std::string("[]"), std::string("{\"annotation\""),
          std::string("{\"a"), record + " ", record.substr(1), record + record})
        EXPECT_FALSE(commitOfRecord(text)) << text;
    for (const char* const word : {"2024-03-05T14", "storagePath", "parentsHashes"}) {
        std::string changed = record;
        changed.replace(changed.find(word), 1, "#");
        EXPECT_FALSE(commitOfRecord(changed)) << word;
    }
}

TEST(CommitRecord, WithAPathThatIsNotSafeIsRefused) {
    for (const char* const name : {"notes.txt", "readme.txt", "old.dwg"}) {
        std::string record = recordOf(example());
        record.replace(record.find(name), 3, "../");
        const Expected<NewCommit> read = commitOfRecord(record);
        ASSERT_FALSE(read) << name;
        EXPECT_EQ(read.error().message.toNarrow(),
                  "'../" + std::string(name).substr(3) +
                      "' cannot be used as a path: it has a component of dots or blanks only");
    }
}

TEST(CommitRecord, OfEachCommitLiesUnderItsHash) {
    Repository repository;
    const sys::Folder folder = *sys::Folder::open(repository.folder.path());
    const OdString one = repository.add({}, "one", {file("a", '1', 10)});
    const OdString two = repository.add({one}, "two", {file("a", '2', 20)});
    repository.history.setReference(L"master", common::RefType::Branch, two);
    qrv::ReferenceRecord record = *qrv::ReferenceRecord::read(folder);
    ASSERT_TRUE(updateRecords(record, 1, "test", repository.history, folder));
    EXPECT_EQ(*recordedCommits(folder), (std::set<OdString>{one, two}));
    EXPECT_EQ(qrv::hashOf(*recordedCommit(two, folder)), two);

    const std::string path = repository.folder / (".qrv/commits/" + one.toNarrow());
    qrv_test::writeFile(path, qrv_test::readFile(path) + " ");
    EXPECT_EQ(recordedCommit(one, folder).error().message.toNarrow(),
              "'.qrv/commits/" + one.toNarrow() + "' is damaged: its contents have another digest");
}

}  // namespace
