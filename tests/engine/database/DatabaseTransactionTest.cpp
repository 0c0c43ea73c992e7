#include <engine/database/Database.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using qrv::Database;
using qrv::DatabaseError;
using qrv::DatabaseTransaction;
using qrv::Statement;

struct Numbers {
    std::unique_ptr<Database> database = Database::inMemory(L"memory");

    Numbers() { database->execute("CREATE TABLE t (x UNIQUE)"); }

    void add(int number) { database->prepare("INSERT INTO t VALUES (?)").run(number); }
    std::string all() {
        Statement query = database->prepare("SELECT x FROM t ORDER BY x");
        std::string text;
        while (query.step())
            text += std::to_string(query.integer(0)) + " ";
        return text;
    }
};

TEST(DatabaseTransaction, KeepsWhatIsCommittedAndNothingElse) {
    Numbers numbers;
    {
        DatabaseTransaction transaction(*numbers.database);
        EXPECT_TRUE(numbers.database->isInTransaction());
        numbers.add(1);
        transaction.commit();
        EXPECT_FALSE(numbers.database->isInTransaction());
    }
    {
        const DatabaseTransaction transaction(*numbers.database);
        numbers.add(2);
    }
    EXPECT_EQ(numbers.all(), "1 ");
    EXPECT_FALSE(numbers.database->isInTransaction());
}

TEST(DatabaseTransaction, InsideAnotherOneCountsWhenThatOneDoes) {
    Numbers numbers;
    {
        DatabaseTransaction outer(*numbers.database);
        numbers.add(1);
        {
            DatabaseTransaction inner(*numbers.database);
            numbers.add(2);
            inner.commit();
        }
        EXPECT_TRUE(numbers.database->isInTransaction());
        outer.commit();
    }
    {
        const DatabaseTransaction outer(*numbers.database);
        DatabaseTransaction inner(*numbers.database);
        numbers.add(3);
        inner.commit();
    }
    EXPECT_EQ(numbers.all(), "1 2 ");
}

TEST(DatabaseTransaction, InsideOthersTakesBackItsOwnChangesOnly) {
    Numbers numbers;
    DatabaseTransaction outer(*numbers.database);
    numbers.add(1);
    {
        DatabaseTransaction middle(*numbers.database);
        numbers.add(2);
        {
            const DatabaseTransaction inner(*numbers.database);
            numbers.add(3);
        }
        numbers.add(4);
        middle.commit();
    }
    {
        const DatabaseTransaction second(*numbers.database);
        numbers.add(5);
    }
    outer.commit();
    EXPECT_EQ(numbers.all(), "1 2 4 ");
}

TEST(DatabaseTransaction, GoesBackWhenAnExceptionPasses) {
    Numbers numbers;
    numbers.add(1);
    EXPECT_THROW(
        {
            DatabaseTransaction transaction(*numbers.database);
            numbers.add(2);
            numbers.add(1);
            transaction.commit();
        },
        DatabaseError);
    EXPECT_EQ(numbers.all(), "1 ");
    EXPECT_FALSE(numbers.database->isInTransaction());
}

TEST(DatabaseTransaction, IsTakenBackWhenItCannotBeCommitted) {
    Numbers numbers;
    numbers.database->execute("CREATE TABLE child (x REFERENCES t(x))");
    EXPECT_THROW(
        {
            DatabaseTransaction transaction(*numbers.database);
            numbers.add(1);
            numbers.database->execute("PRAGMA defer_foreign_keys=ON; INSERT INTO child VALUES (7)");
            transaction.commit();
        },
        DatabaseError);
    EXPECT_EQ(numbers.all(), "");
    EXPECT_FALSE(numbers.database->isInTransaction());
}

TEST(DatabaseTransaction, IsNotSeenFromOutsideBeforeItIsCommitted) {
    const qrv_test::TemporaryFolder folder;
    Database writer(folder.text("a.db"), Database::Access::create);
    writer.execute("CREATE TABLE t (x)");
    Database reader(folder.text("a.db"), Database::Access::readOnly);
    const auto count = [&reader] {
        Statement query = reader.prepare("SELECT count(*) FROM t");
        query.step();
        return query.integer(0);
    };
    DatabaseTransaction transaction(writer);
    writer.execute("INSERT INTO t VALUES (1)");
    EXPECT_EQ(count(), 0);
    transaction.commit();
    EXPECT_EQ(count(), 1);
}

}  // namespace
