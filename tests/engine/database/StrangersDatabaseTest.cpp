#include <engine/database/Database.h>
#include <engine/database/FolderVfsInternal.h>
#include <engine/database/Schema.h>
#include <tests/engine/database/DatabaseOfAStranger.h>
#include <tests/engine/database/Journals.h>
#include <tests/support/Files.h>

#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qrv::Database;
using qrv::DatabaseError;
using qrv_test::bareConnection;
using qrv_test::Connection;
using qrv_test::journalThatNames;
using qrv_test::run;
using qrv_test::writeFile;
using testing::HasSubstr;
using Access = Database::Access;

constexpr Access allAccesses[] = {Access::readOnly, Access::readWrite, Access::create};

using StrangersDatabase = qrv_test::DatabaseOfAStranger;

// A folder that was handed over held a journal whose end named a file of the receiver: a mere look
// deleted it, because SQLite takes the name for that of a journal of several databases.
TEST_F(StrangersDatabase, WithAJournalThatNamesAnotherFileIsRefusedAndTheFileStays) {
    writeFile(path("victim"), "precious");
    const std::string journal = journalThatNames(path("victim"), 2);
    for (const Access access : allAccesses) {
        writeFile(path("a.db-journal"), journal);
        EXPECT_EQ(complaintOfOpening(access),
                  "The database 'DB-journal' cannot be used: it names another file, which would be "
                  "deleted; no command of this program leaves such a journal, so move it away");
        EXPECT_EQ(qrv_test::readFile(path("victim")), "precious");
        EXPECT_TRUE(qrv_test::readFile(path("a.db-journal")) == journal);
    }
    // And it is a journal that does what it was made for.
    EXPECT_EQ(run(bareConnection(path("a.db")), "SELECT * FROM t"), SQLITE_OK);
    EXPECT_FALSE(fs::exists(path("victim")));
}

// The same journal could be put there after the look at it.
TEST_F(StrangersDatabase, CannotNameAnotherFileToSqliteEither) {
    writeFile(path("victim"), "precious");
    writeFile(path("a.db-journal"), journalThatNames(path("victim"), 2));
    const sys::Folder folder = *sys::Folder::open(folder_.path());
    const qrv::FolderVfs vfs(folder, "a.db");
    const Connection connection = bareConnection("a.db", vfs.name());
    EXPECT_NE(run(connection, "SELECT * FROM t"), SQLITE_OK);
    EXPECT_EQ(qrv_test::readFile(path("victim")), "precious");
}

// A pipe under that name made every command wait for ever.
TEST_F(StrangersDatabase, WithAJournalThatNamesAPipeKeepsNobodyWaiting) {
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    writeFile(path("a.db-journal"), journalThatNames(path("pipe"), 2));
    EXPECT_THAT(complaintOfOpening(Access::readOnly), HasSubstr("it names another file"));
}

TEST_F(StrangersDatabase, ReachesNothingButItsFileAndItsJournal) {
    writeFile(path("other.db"), "");
    const sys::Folder folder = *sys::Folder::open(folder_.path());
    const qrv::FolderVfs vfs(folder, "a.db");
    const Connection connection = bareConnection("a.db", vfs.name());
    EXPECT_EQ(run(connection, "INSERT INTO t VALUES (1)"), SQLITE_OK);
    for (const std::string& other : {path("other.db"), std::string("other.db"), path("a.db")})
        EXPECT_NE(run(connection, "ATTACH '" + other + "' AS other"), SQLITE_OK) << other;
    EXPECT_NE(run(connection, "PRAGMA journal_mode=WAL; INSERT INTO t VALUES (2)"), SQLITE_OK);
    EXPECT_NE(run(connection, "VACUUM INTO '" + path("copy.db") + "'"), SQLITE_OK);
    EXPECT_EQ(qrv_test::listTree(folder_.path()), (std::vector<std::string>{"a.db", "other.db"}));
    EXPECT_EQ(qrv_test::readFile(path("other.db")), "");
}

TEST_F(StrangersDatabase, AttachesNoOther) {
    Database database(folder_.text("a.db"), Access::readWrite);
    EXPECT_THAT(complaint([&] { database.execute("ATTACH ':memory:' AS other"); }),
                HasSubstr("too many attached databases"));
}

TEST_F(StrangersDatabase, WithAWriteAheadLogOrItsIndexIsRefused) {
    for (const std::string name : {"a.db-wal", "a.db-shm"}) {
        writeFile(path(name), "");
        for (const Access access : allAccesses)
            EXPECT_EQ(complaintOfOpening(access),
                      "The database 'DB" + name.substr(4) +
                          "' cannot be used: no command of this program makes such a file, whose "
                          "contents would change the database; move it away");
        fs::remove(path(name));
    }
    EXPECT_EQ(complaintOfOpening(Access::readOnly), "no complaint");
    ASSERT_EQ(run(bareConnection(path("a.db")), "PRAGMA journal_mode=WAL"), SQLITE_OK);
    EXPECT_EQ(complaintOfOpening(Access::readOnly),
              "The database 'DB' cannot be used: it has a write-ahead log, which no command of "
              "this program makes");
}

TEST_F(StrangersDatabase, WithAJournalThatIsNoFileOfItsOwnIsRefused) {
    const std::string expected = "The database 'DB-journal' cannot be used: ";
    writeFile(path("elsewhere"), "precious");
    fs::create_symlink(path("elsewhere"), path("a.db-journal"));
    EXPECT_EQ(complaintOfOpening(Access::readWrite),
              expected + "it is a symbolic link, or one leads to it");
    fs::remove(path("a.db-journal"));
    fs::create_hard_link(path("elsewhere"), path("a.db-journal"));
    EXPECT_EQ(complaintOfOpening(Access::readWrite),
              expected + "it has a second name, under which it would be written, too");
    fs::remove(path("a.db-journal"));
    fs::create_directory(path("a.db-journal"));
    EXPECT_EQ(complaintOfOpening(Access::readWrite), expected + "Is a directory");
    EXPECT_EQ(qrv_test::readFile(path("elsewhere")), "precious");
}

TEST_F(StrangersDatabase, IsOpenedInTheFolderThatWasOpenedWhateverItsPathLeadsTo) {
    fs::create_directory(path("kept"));
    fs::rename(path("a.db"), path("kept/a.db"));
    const sys::Folder root = *sys::Folder::open(folder_.path());
    const sys::Folder kept = *root.openFolder("kept");
    fs::rename(path("kept"), path("moved"));
    fs::create_directory(path("outside"));
    fs::create_directory_symlink("outside", path("kept"));

    Database(kept, "a.db", L"a.db", Access::readWrite).execute("INSERT INTO t VALUES (1)");
    EXPECT_EQ(complaint([&] { Database(root, "kept/a.db", L"a.db", Access::create); }),
              "The database 'a.db' cannot be used: it is a symbolic link, or one leads to it");
    EXPECT_EQ(qrv_test::listTree(path("outside")), std::vector<std::string>());
}

constexpr qrv::SchemaEntry ours[] = {{"t", "CREATE TABLE t (x)"}};

// A check of a foreign schema kept a commit busy for half a minute and took gigabytes.
TEST_F(StrangersDatabase, WithCodeInItsSchemaIsRefusedBeforeItRuns) {
    const std::pair<const char*, const char*> schemas[] = {
        {"CREATE TABLE t (x CHECK (length(hex(zeroblob(900000000))) > x))",
         "the table or index 't' has another layout"},
        {"CREATE TABLE t (x, y AS (hex(zeroblob(x))) STORED)",
         "the table or index 't' has another layout"},
        {"CREATE TABLE t (x DEFAULT (hex(zeroblob(900000000))))",
         "the table or index 't' has another layout"},
        {"CREATE TABLE t (x); CREATE INDEX i ON t (hex(zeroblob(x)))",
         "the table or index 'i' does not belong there"},
        {"CREATE TABLE t (x); CREATE VIEW v AS SELECT 1",
         "the table or index 'v' does not belong there"},
        {"CREATE TABLE t (x); CREATE TRIGGER r AFTER INSERT ON t BEGIN DELETE FROM t; END",
         "the table or index 'r' does not belong there"},
        {"CREATE TABLE t (x); CREATE TABLE u (y REFERENCES t (x) ON DELETE CASCADE)",
         "the table or index 'u' does not belong there"},
        {"CREATE TABLE u (y)", "the table or index 't' is missing"}};
    for (const auto& [schema, cause] : schemas) {
        fs::remove(path("a.db"));
        ASSERT_EQ(run(bareConnection(path("a.db")), schema), SQLITE_OK) << schema;
        Database database(folder_.text("a.db"), Access::readWrite);
        EXPECT_EQ(complaint([&] { requireSchema(ours, database); }),
                  std::string("The database 'DB' cannot be used: ") + cause)
            << schema;
    }
}

TEST_F(StrangersDatabase, WithOurSchemaIsUsed) {
    Database database(folder_.text("a.db"), Access::readWrite);
    EXPECT_EQ(complaint([&] { requireSchema(ours, database); }), "no complaint");
}

TEST_F(StrangersDatabase, OfTooManyTablesIsNotReadToTheEnd) {
    std::string sql = "BEGIN;";
    for (int i = 0; i < 4000; ++i)
        sql += "CREATE TABLE t" + std::to_string(i) + " (x);";
    ASSERT_EQ(run(bareConnection(path("a.db")), sql + "COMMIT"), SQLITE_OK);
    EXPECT_THAT(complaintOfOpening(Access::readOnly),
                HasSubstr("takes more steps than a file of its size can need"));
}

/// Makes of the table's one leaf the bottom of a tree in which each page stands many times below
/// the one above it, so that nobody ever comes to the end of its rows.
void multiplyRows(const std::string& file) {
    constexpr std::size_t pageSize = 512;
    constexpr unsigned levels = 8;
    constexpr unsigned children = 60;
    std::string bytes = qrv_test::readFile(file);
    const std::string leaf = bytes.substr(pageSize, pageSize);
    bytes.resize(pageSize);
    for (unsigned level = 0; level < levels; ++level) {
        const std::string below = qrv_test::bigEndian(level + 3);
        std::string page(pageSize, '\0');
        const auto cells = static_cast<unsigned>(pageSize - 5UL * children);
        page.replace(0, 12,
                     std::string("\x05\0\0\0", 4) + static_cast<char>(children) +
                         qrv_test::bigEndian(cells).substr(2) + std::string(1, '\0') + below);
        for (unsigned child = 0; child < children; ++child) {
            const unsigned at = cells + 5 * child;
            page.replace(12 + 2UL * child, 2, qrv_test::bigEndian(at).substr(2));
            page.replace(at, 5, below + static_cast<char>(child + 1));
        }
        bytes += page;
    }
    bytes += leaf;
    const std::string pages = qrv_test::bigEndian(levels + 2);
    bytes.replace(28, 4, pages);
    writeFile(file, bytes);
}

TEST_F(StrangersDatabase, OfRowsWithoutEndIsGivenUp) {
    fs::remove(path("a.db"));
    ASSERT_EQ(run(bareConnection(path("a.db")),
                  "PRAGMA page_size=512; CREATE TABLE t (x); INSERT INTO t VALUES (7)"),
              SQLITE_OK);
    multiplyRows(path("a.db"));
    const std::string expected =
        "The database 'DB' cannot be used: reading it takes more steps than a file of its size "
        "can need, so it is damaged, or was made to do that";
    Database database(folder_.text("a.db"), Access::readOnly);
    EXPECT_EQ(complaint([&] { database.prepare("SELECT sum(x) FROM t").step(); }), expected);
    EXPECT_EQ(complaint([&] {
                  qrv::Statement rows = database.prepare("SELECT x FROM t");
                  while (rows.step())
                      ASSERT_EQ(rows.integer(0), 7);
              }),
              expected);
    EXPECT_THAT(database.damage().toNarrow(), HasSubstr("2nd reference to page"));
}

TEST_F(StrangersDatabase, OfManyRowsIsReadToTheEnd) {
    {
        const Connection bare = bareConnection(path("a.db"));
        ASSERT_EQ(run(bare,
                      "WITH RECURSIVE n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT "
                      "100000) INSERT INTO t SELECT i FROM n; CREATE INDEX i ON t (x)"),
                  SQLITE_OK);
    }
    Database database(folder_.text("a.db"), Access::readOnly);
    qrv::Statement sum = database.prepare("SELECT count(x), sum(x) FROM t");
    ASSERT_TRUE(sum.step());
    EXPECT_EQ(sum.integer(0), 100000);
    EXPECT_EQ(database.damage(), OdString());
}

}  // namespace
