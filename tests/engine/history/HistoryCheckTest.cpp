#include <engine/history/HistoryCheck.h>
#include <engine/history/JournalEntry.h>
#include <tests/engine/history/Repository.h>
#include <tests/support/Effort.h>
#include <tests/support/Files.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>

namespace {

using qrv::Database;
using qrv::History;
using qrv_test::file;
using qrv_test::Repository;
using qrv_test::url;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// A repository with three commits, a branch, a tag and an entry.
struct Sound : Repository {
    Sound() {
        const OdString one = add({}, "one", {file("a", '1', 10)});
        const OdString two = add({one}, "needle", {file("b", '2', 20)});
        const OdString three = add({two, one}, "three", {file("c", '1', 10, "a")});
        history.changeHeadFiles({file("b", '2', 20), file("c", '1', 10)});
        history.setNote(qrv::headNote, three);
        history.setReference(L"master", common::RefType::Branch, three);
        history.setReference(L"v1", common::RefType::Tag, one);
        noteEntry(history, {L"restore", {}, {}, {}, {{qrv_test::relative(L"a"), url('1'), {}, 0}}});
    }

    std::vector<std::string> problems() { return problems(history); }
    std::vector<std::string> problems(History& checked) const {
        std::vector<std::string> texts;
        for (const OdString& problem : problemsOf(checked))
            texts.push_back(withoutPath(problem));
        return texts;
    }
    /// Of the file as it lies on the disk, which may not even open.
    std::vector<std::string> problemsOfFile() const {
        try {
            History reader = History::open(root, Database::Access::readOnly);
            return problems(reader);
        } catch (const qrv::DatabaseError& error) {
            return {withoutPath(error.description())};
        }
    }
    std::filesystem::path dbFile() const { return folder / ".qrv/qrv.db"; }
};

std::string damaged(const std::string& cause) {
    return "The history 'DB' is damaged: " + cause;
}

const std::string sum = damaged(
    "its branches, tags or notes are not those that were written (qrv recover --history takes "
    "those "
    "that were recorded)");

TEST(HistoryCheck, FindsNothingWhereAllIsWell) {
    Sound repository;
    EXPECT_THAT(repository.problems(), IsEmpty());
    Repository empty;
    EXPECT_THAT(problemsOf(empty.history), IsEmpty());
}

TEST(HistoryCheck, ChangesNothing) {
    Sound repository;
    const std::string before = qrv_test::readFile(repository.dbFile());
    History reader = History::open(repository.root, Database::Access::readOnly);
    EXPECT_THAT(repository.problems(reader), IsEmpty());
    EXPECT_THAT(repository.problems(), IsEmpty());
    EXPECT_EQ(qrv_test::readFile(repository.dbFile()), before);
}

TEST(HistoryCheck, FindsEachChangeOfACommit) {
    const std::string second = damaged("commit 2 is not the one that its hash names");
    const std::string third = damaged("commit 3 is not the one that its hash names");
    const std::pair<const char*, std::string> cases[] = {
        {"UPDATE commits SET message = 'noodle' WHERE number = 2", second},
        {"UPDATE commits SET author = 'Eve' WHERE number = 2", second},
        {"UPDATE commits SET time = time + 1 WHERE number = 2", second},
        {"UPDATE changes SET path = 'B', url = url WHERE number = 2", second},
        {"DELETE FROM changes WHERE number = 2", second},
        {"INSERT INTO changes VALUES (2, 'x', x'', '', 0)", second},
        {"UPDATE changes SET previous_path = '' WHERE number = 3", third},
        {"DELETE FROM parents WHERE number = 3 AND position = 1", third},
    };
    for (const auto& [tampering, problem] : cases) {
        Sound repository;
        repository.tamper(tampering);
        EXPECT_THAT(repository.problems(), Contains(problem)) << tampering;
    }
}

TEST(HistoryCheck, FindsAChangedUrlInTheCommitAndInTheFilesOfHead) {
    Sound repository;
    repository.tamper(
        "UPDATE changes SET url = CAST(replace(url, '\"', '3') AS BLOB) WHERE number = 2");
    EXPECT_THAT(repository.problems(),
                ElementsAre(damaged("commit 2 is not the one that its hash names"),
                            damaged("the files of HEAD are not those of its commit")));
}

TEST(HistoryCheck, FindsAChangedSizeThroughTheFilesOfHead) {
    Sound repository;
    repository.tamper("UPDATE changes SET size = 21 WHERE number = 2");
    EXPECT_THAT(repository.problems(),
                ElementsAre(damaged("the sizes of its files are not those that were written"),
                            damaged("the files of HEAD are not those of its commit")));
}

TEST(HistoryCheck, FindsAMissingCommit) {
    Sound repository;
    repository.tamper("DELETE FROM commits WHERE number = 2");
    EXPECT_THAT(repository.problems(),
                UnorderedElementsAre(damaged("a row of the table 'changes' belongs to no commit"),
                                     damaged("a row of the table 'lines' belongs to no commit"),
                                     damaged("a row of the table 'parents' belongs to no commit"),
                                     damaged("commit 3 cannot build on commit 2")));
}

TEST(HistoryCheck, FindsParentsThatAreNotOlder) {
    Sound repository;
    repository.tamper("UPDATE parents SET parent = 3 WHERE number = 2");
    EXPECT_THAT(repository.problems(), ElementsAre(damaged("CHECK constraint failed in parents"),
                                                   damaged("commit 2 cannot build on commit 3")));
}

TEST(HistoryCheck, FindsReferencesThatNameNothing) {
    Sound repository;
    repository.tamper("UPDATE refs SET number = 7 WHERE name = 'v1'");
    EXPECT_THAT(repository.problems(),
                ElementsAre(damaged("a row of the table 'refs' belongs to no commit"),
                            damaged("the reference 'v1' names no commit"), sum));
}

TEST(HistoryCheck, FindsPathsAndUrlsThatAreNotSafe) {
    const std::pair<const char*, std::string> cases[] = {
        {"UPDATE changes SET path = '../b' WHERE number = 2",
         "'../b' cannot be used as a path: it has a component of dots or blanks only"},
        {"UPDATE changes SET url = CAST('po:x' AS BLOB) WHERE number = 2",
         "'po:x' does not name a stored version"},
        {"UPDATE head_files SET path = '/b'", "'/b' cannot be used as a path: it is not relative"},
        {"UPDATE plan_files SET path = '/b'", "'/b' cannot be used as a path: it is not relative"},
    };
    for (const auto& [tampering, problem] : cases) {
        Sound repository;
        if (std::string(tampering).starts_with("UPDATE head_files"))
            repository.tamper("DELETE FROM head_files WHERE path = 'c'");
        repository.tamper(tampering);
        EXPECT_THAT(repository.problems(), ElementsAre(damaged(problem))) << tampering;
    }
}

TEST(HistoryCheck, FindsFilesOfHeadThatAreNotThoseOfItsCommit) {
    const char* const cases[] = {
        "DELETE FROM head_files WHERE path = 'b'",
        "UPDATE head_files SET size = 1 WHERE path = 'b'",
    };
    for (const char* tampering : cases) {
        Sound repository;
        repository.tamper(tampering);
        EXPECT_THAT(repository.problems(),
                    ElementsAre(damaged("the files of HEAD are not those of its commit")))
            << tampering;
    }
    Sound repository;
    repository.tamper("UPDATE notes SET text = 'none' WHERE name = 'head'");
    EXPECT_THAT(repository.problems(), ElementsAre(sum, "The history 'DB' has no commit 'none'"));
    Sound other;
    other.tamper("DELETE FROM notes WHERE name = 'head'");
    EXPECT_THAT(other.problems(),
                ElementsAre(sum, damaged("the files of HEAD are not those of its commit")));
}

TEST(HistoryCheck, FindsTablesThatAreNotAsTheyShouldBe) {
    Sound repository;
    repository.tamper(
        "DROP INDEX changes_by_path; ALTER TABLE notes ADD COLUMN extra TEXT; "
        "CREATE TABLE foreigner (x)");
    EXPECT_THAT(repository.problems(),
                ElementsAre(damaged("the table or index 'notes' has another layout"),
                            damaged("the table or index 'changes_by_path' is missing"),
                            damaged("the table or index 'foreigner' does not belong there")));
}

TEST(HistoryCheck, OfAFileWithAForeignTableIsNotBegun) {
    Sound repository;
    repository.tamper("CREATE TABLE foreigner (x)");
    EXPECT_THAT(repository.problemsOfFile(),
                ElementsAre("The database 'DB' cannot be used: the table or index 'foreigner' does "
                            "not belong there"));
}

TEST(HistoryCheck, FindsAFlippedByte) {
    Sound repository;
    std::string bytes = qrv_test::readFile(repository.dbFile());
    bytes[bytes.find("needle")] ^= 1;
    qrv_test::writeFile(repository.dbFile(), bytes);
    History reader = History::open(repository.root, Database::Access::readOnly);
    EXPECT_THAT(repository.problems(reader),
                ElementsAre(damaged("commit 2 is not the one that its hash names")));
}

TEST(HistoryCheck, FindsThatTheFileWasCut) {
    Sound repository;
    const std::string bytes = qrv_test::readFile(repository.dbFile());
    for (std::size_t size = 4096; size < bytes.size(); size += 4096) {
        qrv_test::writeFile(repository.dbFile(), bytes.substr(0, size));
        EXPECT_THAT(repository.problemsOfFile(),
                    Contains("The database 'DB' cannot be used: database disk image is malformed"))
            << size;
    }
}

TEST(HistoryCheck, EndsOnAnyDamage) {
    // Every page overwritten in turn, from its begin and from its middle.
    Sound repository;
    std::size_t damages = 0;
    const std::string bytes = qrv_test::readFile(repository.dbFile());
    for (std::size_t at = 4096; at < bytes.size(); at += 2048) {
        std::string broken = bytes;
        broken.replace(at, 512, std::string(512, '\x7F'));
        qrv_test::writeFile(repository.dbFile(), broken);
        const bool isUsed = bytes.substr(at, 512) != std::string(512, '\0');
        EXPECT_TRUE(!repository.problemsOfFile().empty() || !isUsed) << at;
        ++damages;
    }
    qrv_test::tellTried(damages, "damaged inputs");
}

}  // namespace
