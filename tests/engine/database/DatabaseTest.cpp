#include <engine/database/Database.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace {

namespace fs = std::filesystem;
using qrv::Database;
using qrv::DatabaseError;
using qrv::Statement;
using Access = qrv::Database::Access;

/// What the database says when it cannot do it, with "DB" for the path of its file.
template <class Action>
std::string complaint(const OdString& path, const Action& action) {
    try {
        action();
    } catch (const DatabaseError& error) {
        std::string text = error.what();
        const std::string file = path.toNarrow();
        if (const auto at = text.find(file); at != std::string::npos)
            text.replace(at, file.size(), "DB");
        return text;
    }
    return "no complaint";
}

std::string complaintOfOpening(const OdString& path, Access access) {
    return complaint(path, [&] { const Database database(path, access); });
}

std::int64_t countRows(Database& database) {
    Statement count = database.prepare("SELECT count(*) FROM t");
    count.step();
    return count.integer(0);
}

TEST(Database, IsMadeOnlyWhenAskedFor) {
    const qrv_test::TemporaryFolder folder;
    const OdString path = folder.text("a.db");
    for (const Access access : {Access::readOnly, Access::readWrite})
        EXPECT_EQ(complaintOfOpening(path, access),
                  "The database 'DB' cannot be used: unable to open database file");
    EXPECT_EQ(complaintOfOpening(folder.text("none/a.db"), Access::create)
                      .find("No such file or directory") != std::string::npos,
              true);
    EXPECT_EQ(qrv_test::listTree(folder.path()), std::vector<std::string>());

    Database(path, Access::create).execute("CREATE TABLE t (x)");
    EXPECT_EQ(qrv_test::listTree(folder.path()), std::vector<std::string>{"a.db"});
}

TEST(Database, RefusesWhatIsNoRegularFile) {
    const qrv_test::TemporaryFolder folder;
    Database(folder.text("real.db"), Access::create).execute("CREATE TABLE t (x)");
    fs::create_symlink(folder / "real.db", folder / "link.db");
    fs::create_directory(folder / "folder.db");
    ASSERT_EQ(::mkfifo((folder / "pipe.db").c_str(), 0600), 0);
    for (const char* name : {"link.db", "folder.db", "pipe.db"}) {
        for (const Access access : {Access::readOnly, Access::readWrite, Access::create})
            EXPECT_EQ(complaintOfOpening(folder.text(name), access),
                      "The database 'DB' cannot be used: it is not a regular file")
                << name;
    }
}

TEST(Database, RefusesAPipeInPlaceOfItsJournal) {
    const qrv_test::TemporaryFolder folder;
    const OdString path = folder.text("a.db");
    Database(path, Access::create).execute("CREATE TABLE t (x)");
    ASSERT_EQ(::mkfifo((folder / "a.db-journal").c_str(), 0600), 0);
    EXPECT_EQ(complaintOfOpening(path, Access::readOnly),
              "The database 'DB-journal' cannot be used: it is not a regular file");
}

TEST(Database, IsReachedThroughLinkedFolders) {
    const qrv_test::TemporaryFolder folder;
    fs::create_directory(folder / "real");
    fs::create_directory_symlink(folder / "real", folder / "link");
    Database(folder.text("link/a.db"), Access::create).execute("CREATE TABLE t (x)");
    Database database(folder.text("link/a.db"), Access::readOnly);
    EXPECT_EQ(countRows(database), 0);
    EXPECT_EQ(database.path(), folder.text("link/a.db"));
    EXPECT_TRUE(fs::exists(folder / "real/a.db"));
}

TEST(Database, OpenedForReadingOnlyIsNotWritten) {
    const qrv_test::TemporaryFolder folder;
    const OdString path = folder.text("a.db");
    Database(path, Access::create).execute("CREATE TABLE t (x)");
    EXPECT_EQ(
        complaint(path,
                  [&] { Database(path, Access::readOnly).execute("INSERT INTO t VALUES (1)"); }),
        "The database 'DB' cannot be used: attempt to write a readonly database");
}

TEST(Database, SaysThatAFileIsNone) {
    const qrv_test::TemporaryFolder folder;
    qrv_test::writeFile(folder / "a.db", std::string(5000, 'x'));
    for (const Access access : {Access::readOnly, Access::readWrite, Access::create})
        EXPECT_EQ(complaintOfOpening(folder.text("a.db"), access),
                  "The database 'DB' cannot be used: file is not a database");
}

TEST(Database, ShowsTheNameOfItsFileSafely) {
    const qrv_test::TemporaryFolder folder;
    EXPECT_THAT(complaintOfOpening(folder.text("\x1B[2J.db"), Access::readOnly),
                testing::HasSubstr("/\\x1B[2J.db' cannot be used"));
}

TEST(Database, KeepsTextsAsTheyAre) {
    const std::unique_ptr<Database> database = Database::inMemory(L"memory");
    database->execute("CREATE TABLE t (x TEXT) STRICT");
    Statement insertion = database->prepare("INSERT INTO t VALUES (?)");
    const std::string texts[] = {"", "plan", "Gehäuse \U0001F4D0", std::string("a\0b", 3),
                                 "no UTF-8 \xFF\xC3"};
    for (const std::string& text : texts)
        insertion.run(OdString::fromNarrow(text));

    Statement query = database->prepare("SELECT x FROM t ORDER BY rowid");
    for (const std::string& text : texts) {
        ASSERT_TRUE(query.step());
        EXPECT_EQ(query.text(0), OdString::fromNarrow(text));
        EXPECT_EQ(query.bytes(0), text);
        EXPECT_FALSE(query.isNull(0));
    }
    EXPECT_FALSE(query.step());
}

TEST(Database, KeepsNumbersBytesAndNothing) {
    const std::unique_ptr<Database> database = Database::inMemory(L"memory");
    database->execute("CREATE TABLE t (i, b, n)");
    const std::string bytes("\0\xFF\x80 x", 5);
    database->prepare("INSERT INTO t VALUES (?, ?, ?)")
        .run(std::int64_t{INT64_MIN}, std::string_view(bytes), nullptr);
    database->prepare("INSERT INTO t VALUES (?, ?, ?)").run(7, std::string_view(), nullptr);

    Statement query = database->prepare("SELECT i, b, n FROM t ORDER BY rowid");
    ASSERT_TRUE(query.step());
    EXPECT_EQ(query.integer(0), INT64_MIN);
    EXPECT_EQ(query.bytes(1), bytes);
    EXPECT_TRUE(query.isNull(2));
    EXPECT_EQ(query.text(2), OdString());
    ASSERT_TRUE(query.step());
    EXPECT_EQ(query.integer(0), 7);
    EXPECT_EQ(query.bytes(1), "");
    EXPECT_FALSE(query.isNull(1));
}

TEST(Database, GivesTheTextsOfAFileInUtf16) {
    const qrv_test::TemporaryFolder folder;
    Database database(folder.text("a.db"), Access::create);
    database.execute("PRAGMA encoding = 'UTF-16'; CREATE TABLE t (x)");
    database.prepare("INSERT INTO t VALUES (?)").run(OdString(L"Geh\u00E4use"));
    Statement query = database.prepare("SELECT x FROM t");
    ASSERT_TRUE(query.step());
    EXPECT_EQ(query.text(0), OdString(L"Geh\u00E4use"));
}

TEST(Database, RunsAStatementAgainWithOtherValues) {
    const std::unique_ptr<Database> database = Database::inMemory(L"memory");
    Statement sum = database->prepare("SELECT ? + ?");
    sum.bind(1, 2);
    ASSERT_TRUE(sum.step());
    EXPECT_EQ(sum.integer(0), 3);
    sum.bind(10, 20);
    ASSERT_TRUE(sum.step());
    EXPECT_EQ(sum.integer(0), 30);
    EXPECT_FALSE(sum.step());
}

TEST(Database, TellsWhatIsWrongWithAStatement) {
    const std::unique_ptr<Database> database = Database::inMemory(L"memory");
    database->execute("CREATE TABLE t (x UNIQUE)");
    EXPECT_EQ(complaint(L"memory", [&] { database->prepare("SELECT y FROM t"); }),
              "The database 'DB' cannot be used: no such column: y");
    EXPECT_EQ(complaint(L"memory", [&] { database->execute("SELEC"); }),
              "The database 'DB' cannot be used: near \"SELEC\": syntax error");
    EXPECT_EQ(complaint(L"memory", [&] { database->prepare("SELECT ?").run(1, 2); }),
              "The database 'DB' cannot be used: column index out of range");
    Statement insertion = database->prepare("INSERT INTO t VALUES (?)");
    insertion.run(1);
    EXPECT_EQ(complaint(L"memory", [&] { insertion.run(1); }),
              "The database 'DB' cannot be used: UNIQUE constraint failed: t.x");
    insertion.run(2);
    EXPECT_EQ(countRows(*database), 2);
}

TEST(Database, RemembersTheNumberOfItsLayout) {
    const qrv_test::TemporaryFolder folder;
    Database database(folder.text("a.db"), Access::create);
    EXPECT_EQ(database.schemaVersion(), 0);
    database.setSchemaVersion(7);
    EXPECT_EQ(Database(folder.text("a.db"), Access::readOnly).schemaVersion(), 7);
}

TEST(Database, DoesNotRunCodeThatStandsInTheFile) {
    const qrv_test::TemporaryFolder folder;
    Database database(folder.text("a.db"), Access::create);
    database.execute(
        "CREATE TABLE t (x); CREATE VIEW v AS SELECT 1;"
        "CREATE TRIGGER r AFTER INSERT ON t BEGIN INSERT INTO t VALUES (99); END;"
        "INSERT INTO t VALUES (1)");
    EXPECT_EQ(countRows(database), 1);
    EXPECT_EQ(complaint(database.path(), [&] { database.prepare("SELECT * FROM v"); }),
              "The database 'DB' cannot be used: access to view \"v\" prohibited");
    EXPECT_EQ(
        complaint(
            database.path(),
            [&] { database.execute("PRAGMA writable_schema=ON; DELETE FROM sqlite_schema"); }),
        "The database 'DB' cannot be used: table sqlite_master may not be modified");
}

TEST(Database, FindsItsOwnDamage) {
    const qrv_test::TemporaryFolder folder;
    {
        Database database(folder.text("a.db"), Access::create);
        database.execute("CREATE TABLE t (x UNIQUE); INSERT INTO t VALUES ('needle')");
        EXPECT_EQ(database.damage(), OdString());
    }
    std::string bytes = qrv_test::readFile(folder / "a.db");
    bytes[bytes.rfind("needle")] = 'b';
    qrv_test::writeFile(folder / "a.db", bytes);
    EXPECT_EQ(Database(folder.text("a.db"), Access::readOnly).damage().toNarrow(),
              "row 1 missing from index sqlite_autoindex_t_1");
}

/// The files of a process that was killed while it wrote, in a folder of their own.
void leaveHalfWritten(const qrv_test::TemporaryFolder& folder) {
    Database database(folder.text("a.db"), Access::create);
    database.execute("CREATE TABLE t (x); INSERT INTO t VALUES (1)");
    database.execute("PRAGMA cache_size = 2; BEGIN; UPDATE t SET x = 2");
    for (int i = 0; i < 100; ++i)
        database.prepare("INSERT INTO t VALUES (?)").run(OdString(std::wstring(3000, L'x')));
    fs::create_directory(folder / "killed");
    for (const char* name : {"a.db", "a.db-journal"})
        fs::copy_file(folder / name, folder / ("killed/" + std::string(name)));
}

TEST(Database, TakesBackWhatAKilledProcessHadBegunAlsoForAReader) {
    for (const Access access : {Access::readOnly, Access::readWrite, Access::create}) {
        const qrv_test::TemporaryFolder folder;
        leaveHalfWritten(folder);
        Database database(folder.text("killed/a.db"), access);
        Statement query = database.prepare("SELECT x FROM t");
        ASSERT_TRUE(query.step());
        EXPECT_EQ(query.integer(0), 1);
        EXPECT_FALSE(query.step());
    }
}

TEST(Database, StaysReadOnlyAfterItTookSomethingBack) {
    const qrv_test::TemporaryFolder folder;
    leaveHalfWritten(folder);
    Database database(folder.text("killed/a.db"), Access::readOnly);
    EXPECT_EQ(complaint(database.path(), [&] { database.execute("DELETE FROM t"); }),
              "The database 'DB' cannot be used: attempt to write a readonly database");
}

}  // namespace
