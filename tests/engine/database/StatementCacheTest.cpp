#include <engine/database/Database.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

using qrv::Database;
using qrv::Statement;
using Access = qrv::Database::Access;

/// A file with the numbers 1 to 3.
class StatementsThatEnded : public testing::Test {
protected:
    StatementsThatEnded() {
        database.execute("CREATE TABLE t (x); INSERT INTO t VALUES (1), (2), (3)");
    }

    std::int64_t firstFrom(const char* sql) {
        Statement query = database.prepare(sql);
        return query.step() ? query.integer(0) : 0;
    }

    const qrv_test::TemporaryFolder folder;
    const OdString path = folder.text("a.db");
    Database database{path, Access::create};
};

TEST_F(StatementsThatEnded, BeginWithTheFirstRowAgain) {
    EXPECT_EQ(firstFrom("SELECT x FROM t ORDER BY x"), 1);
    EXPECT_EQ(firstFrom("SELECT x FROM t ORDER BY x"), 1);
}

TEST_F(StatementsThatEnded, KnowNoValuesOfThoseBefore) {
    {
        Statement query = database.prepare("SELECT x FROM t WHERE x = ?");
        query.bind(2);
        EXPECT_TRUE(query.step());
    }
    EXPECT_EQ(firstFrom("SELECT x FROM t WHERE x = ?"), 0);
}

TEST_F(StatementsThatEnded, AreNotThoseThatStillRun) {
    Statement one = database.prepare("SELECT x FROM t ORDER BY x");
    Statement other = database.prepare("SELECT x FROM t ORDER BY x");
    EXPECT_TRUE(one.step());
    EXPECT_TRUE(one.step());
    EXPECT_TRUE(other.step());
    EXPECT_EQ(one.integer(0), 2);
    EXPECT_EQ(other.integer(0), 1);
}

TEST_F(StatementsThatEnded, HoldNoLock) {
    EXPECT_EQ(firstFrom("SELECT x FROM t ORDER BY x"), 1);
    Database writer(path, Access::readWrite);
    writer.execute("PRAGMA busy_timeout = 0; DELETE FROM t WHERE x = 1");
    EXPECT_EQ(firstFrom("SELECT x FROM t ORDER BY x"), 2);
}

TEST_F(StatementsThatEnded, SeeTablesThatWereMadeAnew) {
    EXPECT_EQ(firstFrom("SELECT x FROM t"), 1);
    database.execute("DROP TABLE t; CREATE TABLE t (y, x); INSERT INTO t VALUES (7, 8)");
    EXPECT_EQ(firstFrom("SELECT x FROM t"), 8);
}

TEST_F(StatementsThatEnded, AskForTheLayoutAnew) {
    EXPECT_EQ(database.schemaVersion(), 0);
    Database(path, Access::readWrite).setSchemaVersion(4);
    EXPECT_EQ(database.schemaVersion(), 4);
}

TEST_F(StatementsThatEnded, AreForgottenWhenTheyAreMany) {
    for (int number = 1; number <= 100; ++number) {
        const std::string sql = "SELECT " + std::to_string(number);
        EXPECT_EQ(firstFrom(sql.c_str()), number);
    }
    EXPECT_EQ(firstFrom("SELECT 1"), 1);
}

}  // namespace
