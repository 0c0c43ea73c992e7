#include <tests/engine/database/DatabaseOfAStranger.h>
#include <tests/support/Files.h>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <utility>

namespace {

namespace fs = std::filesystem;
using qrv::Database;
using qrv_test::bareConnection;
using qrv_test::Connection;
using qrv_test::run;
using qrv_test::writeFile;
using Access = Database::Access;

using UnwritableDatabase = qrv_test::DatabaseOfAStranger;

/// This process as somebody who may write nothing of root's, as long as it lives.
class WithoutRights {
public:
    WithoutRights() : isRoot_(::geteuid() == 0) {
        constexpr uid_t nobody = 65534;
        if (isRoot_)
            static_cast<void>(::seteuid(nobody));
    }
    WithoutRights(const WithoutRights&) = delete;
    WithoutRights& operator=(const WithoutRights&) = delete;
    ~WithoutRights() {
        if (isRoot_)
            static_cast<void>(::seteuid(0));
    }

private:
    bool isRoot_;
};

/// Of a file and its folder, so that nothing there can be written.
class Unwritable {
public:
    explicit Unwritable(fs::path folder) : folder_(std::move(folder)) {
        for (const auto& entry : fs::directory_iterator(folder_))
            ::chmod(entry.path().c_str(), 0444);
        ::chmod(folder_.c_str(), 0555);
    }
    Unwritable(const Unwritable&) = delete;
    Unwritable& operator=(const Unwritable&) = delete;
    ~Unwritable() { ::chmod(folder_.c_str(), 0755); }

private:
    fs::path folder_;
};

TEST_F(UnwritableDatabase, CanBeRead) {
    run(bareConnection(path("a.db")), "INSERT INTO t VALUES (5)");
    // The beginning of a journal that was never finished.
    writeFile(path("a.db-journal"), std::string(512, '\0'));
    const Unwritable medium(folder_.path());
    const WithoutRights user;
    for (const Access access : {Access::readOnly, Access::readWrite}) {
        Database database(folder_.text("a.db"), access);
        qrv::Statement query = database.prepare("SELECT x FROM t");
        ASSERT_TRUE(query.step());
        EXPECT_EQ(query.integer(0), 5);
    }
}

TEST_F(UnwritableDatabase, ThatIsHalfWrittenIsRefused) {
    {
        const Connection writer = bareConnection(path("a.db"));
        ASSERT_EQ(run(writer,
                      "PRAGMA cache_size=2; BEGIN; WITH RECURSIVE n (i) AS (SELECT 1 UNION ALL "
                      "SELECT i + 1 FROM n LIMIT 300) INSERT INTO t SELECT zeroblob(3000) FROM n"),
                  SQLITE_OK);
        fs::create_directory(path("killed"));
        for (const char* name : {"a.db", "a.db-journal"})
            fs::copy_file(path(name), path("killed/" + std::string(name)));
    }
    const std::string expected =
        "The database 'killed' cannot be used: a command was interrupted while it wrote, and this "
        "cannot be taken back where nothing can be written; copy the repository to another disk";
    const sys::Folder folder = *sys::Folder::open(folder_.path());
    {
        const Unwritable medium(path("killed"));
        const WithoutRights user;
        for (const Access access : {Access::readOnly, Access::readWrite})
            EXPECT_EQ(complaint([&] { Database(folder, "killed/a.db", L"killed", access); }),
                      expected);
    }
    fs::permissions(path("killed/a.db"), fs::perms::owner_write, fs::perm_options::add);
    fs::permissions(path("killed/a.db-journal"), fs::perms::owner_write, fs::perm_options::add);
    EXPECT_EQ(complaint([&] { Database(folder, "killed/a.db", L"killed", Access::readOnly); }),
              "no complaint");
}

}  // namespace
