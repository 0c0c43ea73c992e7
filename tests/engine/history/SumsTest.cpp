#include <engine/history/HistoryCheck.h>
#include <engine/history/HistoryRecords.h>
#include <engine/history/SumsInternal.h>
#include <tests/engine/history/OlderHistory.h>
#include <tests/support/Effort.h>
#include <tests/support/Files.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

using qrv::Database;
using qrv::DatabaseError;
using qrv::History;
using qrv::RecordState;
using qrv::ReferenceRecord;
using qrv_test::file;
using qrv_test::Repository;

/// Three commits, a branch, a tag and a merge that is going on.
struct Sound : Repository {
    Sound() {
        one = add({}, "one", {file("a", '1', 10)});
        two = add({one}, "two", {file("b", '2', 20)});
        three = add({two, one}, "three", {file("c", '1', 10, "a")});
        history.changeHeadFiles({file("b", '2', 20), file("c", '1', 10)});
        history.setNote(qrv::headNote, three);
        history.setNote(L"merge", one);
        history.setReference(L"master", common::RefType::Branch, three);
        history.setReference(L"v1", common::RefType::Tag, one);
    }
    std::filesystem::path dbFile() const { return folder / ".qrv/qrv.db"; }

    OdString one;
    OdString two;
    OdString three;
};

/// All that a command can print of the history.
std::string everythingOf(History& history) {
    std::string text;
    for (const common::Reference& reference : history.references())
        text += reference.name.toNarrow() + reference.commitHash.toNarrow() +
                std::to_string(static_cast<int>(reference.type)) + "\n";
    for (std::int64_t number = 1; number <= 3; ++number) {
        const qrv::CommitEntry entry = history.commitByNumber(number).value();
        text += entry.hash.toNarrow() + entry.author.toNarrow() + entry.message.toNarrow() +
                std::to_string(entry.timeSeconds) + "\n";
        for (const OdString& parent : entry.parents)
            text += parent.toNarrow() + "\n";
        for (const qrv::FileDelta& delta : history.deltas(entry.hash))
            text +=
                delta.path.bytes() + (delta.previousPath ? delta.previousPath->bytes() : "") + "\n";
        text += qrv_test::shown(history.tree(entry.hash)) + "\n";
    }
    for (const char* const path : {"a", "b", "c"}) {
        for (const std::int64_t number : history.commitsOfPath(OdString(path)))
            text += std::to_string(number) + " ";
    }
    text += std::to_string(history.ancestors(history.commitByNumber(3)->hash).size());
    return text + qrv_test::shown(history.headFiles()) + history.note(qrv::headNote).toNarrow() +
           history.note(L"merge").toNarrow();
}

/// Whether the file is refused, or found damaged, or says the same as ever.
std::string verdict(const common::RootPath& root, const std::string& expected) {
    try {
        History history = History::open(root, Database::Access::readOnly);
        if (!problemsOf(history).empty())
            return "";
        const std::string found = everythingOf(history);
        return found == expected ? "" : "says: " + found;
    } catch (const DatabaseError&) {
        return "";
    }
}

// Symptom: 215 of 5,000 flipped bytes went unseen, and three changed what the history says.
// Cause: the hash of a commit covers neither references nor notes nor the sizes of files.
TEST(Sums, LetNoFlippedByteOfTheFileChangeUnseenWhatItSays) {
    Sound repository;
    const std::string expected = everythingOf(repository.history);
    const std::string bytes = qrv_test::readFile(repository.dbFile());
    // A prime, so that each place of a row is met; all of them take minutes.
    const std::size_t step = qrv_test::isExhaustive() ? 1 : 61;
    std::size_t seen = 0;
    for (std::size_t at = 0; at < bytes.size(); at += step) {
        std::string flipped = bytes;
        flipped[at] = static_cast<char>(flipped[at] ^ (1 << (at % 8)));
        qrv_test::writeFile(repository.dbFile(), flipped);
        EXPECT_EQ(verdict(repository.root, expected), "") << "byte " << at;
        ++seen;
    }
    EXPECT_GT(seen, 500U);
    qrv_test::tellTried(seen, "flipped bytes");
}

TEST(Sums, AreComparedByEachReadOfAReference) {
    for (const char* const tampering :
         {"UPDATE refs SET number = 1 WHERE name = 'master'", "DELETE FROM refs WHERE name = 'v1'",
          "UPDATE refs SET name = 'v2' WHERE name = 'v1'",
          "INSERT INTO refs VALUES ('tag', 'v3', 2)", "DELETE FROM notes WHERE name = 'merge'",
          "UPDATE notes SET text = 'x' WHERE name = 'merge'",
          "DELETE FROM notes WHERE name = 'sum'", "PRAGMA user_version = 1"}) {
        Sound repository;
        repository.tamper(tampering);
        const std::string damage =
            "The history 'DB' is damaged: its branches, tags or notes are not those that were "
            "written (qrv recover --history takes those that were recorded)";
        EXPECT_EQ(repository.complaint([&] { repository.history.references(); }), damage)
            << tampering;
        EXPECT_EQ(repository.complaint(
                      [&] { repository.history.reference(L"x", common::RefType::Branch); }),
                  damage)
            << tampering;
    }
}

TEST(Sums, CoverTheSizesOfAllCommits) {
    Sound repository;
    repository.tamper("UPDATE changes SET size = 11 WHERE number = 1");
    std::vector<std::string> problems;
    for (const OdString& problem : problemsOf(repository.history))
        problems.push_back(repository.withoutPath(problem));
    EXPECT_THAT(problems, testing::Contains("The history 'DB' is damaged: the sizes of its files "
                                            "are not those that were written"));
}

TEST(Sums, AreAddedToAHistoryOfAnOlderProgramWithItsFirstChange) {
    Sound repository;
    const OdString sizes = notedSizes(repository.history.database());
    makeLayout1(repository);
    const std::string before = qrv_test::readFile(repository.dbFile());
    {
        History look = History::open(repository.root, Database::Access::readOnly);
        EXPECT_TRUE(problemsOf(look).empty());
        EXPECT_EQ(look.reference(L"v1", common::RefType::Tag), repository.one);
    }
    EXPECT_EQ(qrv_test::readFile(repository.dbFile()), before);
    {
        History change = History::open(repository.root, Database::Access::create);
        EXPECT_TRUE(problemsOf(change).empty());
        EXPECT_EQ(notedSizes(change.database()), sizes);
    }
    repository.tamper("UPDATE refs SET number = 2 WHERE name = 'v1'");
    EXPECT_EQ(problemsOf(repository.history).size(), 1U);
}

TEST(Sums, CountEachChangeOfAReferenceOnce) {
    Sound repository;
    Database& database = repository.history.database();
    const std::int64_t before = qrv::generationOf(database);
    repository.history.setReference(L"v1", common::RefType::Tag, repository.one);
    repository.history.removeReference(L"none", common::RefType::Tag);
    EXPECT_EQ(qrv::generationOf(database), before);
    repository.history.setReference(L"v1", common::RefType::Tag, repository.two);
    repository.history.removeReference(L"v1", common::RefType::Tag);
    EXPECT_EQ(qrv::generationOf(database), before + 2);
}

}  // namespace
