#include <tests/engine/history/Repository.h>
#include <tests/support/Files.h>

#include <gmock/gmock.h>

#include <filesystem>

namespace {

using qrv::Database;
using qrv::DatabaseTransaction;
using qrv::History;
using qrv::Tree;
using qrv_test::file;
using qrv_test::newCommit;
using qrv_test::Repository;
using Access = qrv::Database::Access;

/// A repository without a history.
struct BareRepository {
    qrv_test::TemporaryFolder folder;
    common::RootPath root = common::RootPath::get(folder.text(), true).value();

    std::string complaint(Access access) const {
        try {
            History::open(root, access);
        } catch (const qrv::DatabaseError& error) {
            std::string text = error.what();
            const std::string path = root.dbPath().toNarrow();
            return text.replace(text.find(path), path.size(), "DB");
        }
        return "no complaint";
    }
};

TEST(History, IsMadeWhereThereIsNone) {
    const BareRepository repository;
    EXPECT_EQ(repository.complaint(Access::readWrite),
              "The database 'DB' cannot be used: unable to open database file");
    History::open(repository.root, Access::create).setNote(L"a", L"b");
    EXPECT_EQ(qrv_test::listTree(repository.folder.path()),
              (std::vector<std::string>{".qrv/", ".qrv/qrv.db"}));
    for (const Access access : {Access::readOnly, Access::readWrite, Access::create})
        EXPECT_EQ(History::open(repository.root, access).note(L"a"), OdString(L"b"));
}

TEST(History, ForReadingIsEmptyWhereThereIsNone) {
    const BareRepository repository;
    History history = History::open(repository.root, Access::readOnly);
    EXPECT_EQ(history.lastNumber(), 0);
    EXPECT_TRUE(history.references().empty());
    EXPECT_EQ(history.headFiles(), Tree());
    EXPECT_EQ(history.tree(OdString()), Tree());
    EXPECT_THROW(history.setNote(L"a", L"b"), qrv::DatabaseError);
    EXPECT_EQ(qrv_test::listTree(repository.folder.path()), std::vector<std::string>{".qrv/"});
}

TEST(History, TakesAnEmptyFileForNone) {
    const BareRepository repository;
    qrv_test::writeFile(repository.folder / ".qrv/qrv.db", "");
    EXPECT_EQ(History::open(repository.root, Access::readOnly).lastNumber(), 0);
    EXPECT_EQ(qrv_test::readFile(repository.folder / ".qrv/qrv.db"), "");
    History history = History::open(repository.root, Access::readWrite);
    EXPECT_EQ(history.add(newCommit({}, "one")).number, 1);
}

TEST(History, OfANewerProgramIsRefused) {
    const Repository repository;
    repository.tamper("PRAGMA user_version = 4");
    for (const Access access : {Access::readOnly, Access::readWrite, Access::create})
        EXPECT_EQ(repository.complaint([&] { History::open(repository.root, access); }),
                  "The history 'DB' was written by a newer version of this program");
}

TEST(History, IsNotMadeInAFileOfSomethingElse) {
    for (const char* sql :
         {"CREATE TABLE t (x)", "PRAGMA user_version = 1", "PRAGMA application_id = 7",
          "PRAGMA user_version = -1", "PRAGMA application_id = 1903326824"}) {
        const BareRepository repository;
        Database(repository.root.dbPath(), Access::create).execute(sql);
        for (const Access access : {Access::readOnly, Access::readWrite, Access::create})
            EXPECT_EQ(repository.complaint(access), "The file 'DB' is no history of a repository")
                << sql;
    }
    const BareRepository repository;
    qrv_test::writeFile(repository.folder / ".qrv/qrv.db", "PK, and so on");
    EXPECT_EQ(repository.complaint(Access::create),
              "The database 'DB' cannot be used: file is not a database");
}

TEST(History, RemembersNotes) {
    Repository repository;
    EXPECT_EQ(repository.history.note(L"merge"), OdString());
    repository.history.setNote(L"merge", L"one");
    repository.history.setNote(L"head", L"other");
    repository.history.setNote(L"merge", L"two");
    EXPECT_EQ(repository.history.note(L"merge"), OdString(L"two"));
    repository.history.setNote(L"merge", OdString());
    repository.history.setNote(L"merge", OdString());
    EXPECT_EQ(repository.history.note(L"merge"), OdString());
    EXPECT_EQ(repository.history.note(L"head"), OdString(L"other"));
    auto count = repository.history.database().prepare(
        "SELECT count(*) FROM notes WHERE name IN ('merge', 'head')");
    ASSERT_TRUE(count.step());
    EXPECT_EQ(count.integer(0), 1);
}

TEST(History, ChangesOfSeveralOperationsBecomeOne) {
    Repository repository;
    {
        const DatabaseTransaction transaction(repository.history.database());
        const OdString hash = repository.add({}, "one", {file("a", '1')});
        repository.history.changeHeadFiles({file("a", '1')});
        repository.history.setReference(L"master", common::RefType::Branch, hash);
    }
    EXPECT_EQ(repository.history.lastNumber(), 0);
    EXPECT_EQ(repository.history.headFiles(), Tree());
    EXPECT_TRUE(repository.history.references().empty());
}

}  // namespace
