#pragma once

#include <engine/database/Database.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <functional>
#include <memory>
#include <string>

namespace qrv_test {

using Connection = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;

/// SQLite as others use it.
inline Connection bareConnection(const std::string& file, const char* vfs = nullptr) {
    sqlite3* connection = nullptr;
    sqlite3_open_v2(file.c_str(), &connection, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, vfs);
    return {connection, &sqlite3_close};
}

inline int run(const Connection& connection, const std::string& sql) {
    return sqlite3_exec(connection.get(), sql.c_str(), nullptr, nullptr, nullptr);
}

class DatabaseOfAStranger : public testing::Test {
protected:
    DatabaseOfAStranger() {
        run(bareConnection(path("a.db")), "CREATE TABLE t (x)");
        // For somebody else, too.
        ::chmod(folder_.path().c_str(), 0755);
    }

    std::string path(const std::string& name) const { return folder_ / name; }

    /// What the database says, with "DB" for the path of its file.
    std::string complaint(const std::function<void()>& action) const {
        try {
            action();
        } catch (const qrv::DatabaseError& error) {
            std::string text = error.what();
            const std::string file = path("a.db");
            if (const auto at = text.find(file); at != std::string::npos)
                text.replace(at, file.size(), "DB");
            return text;
        }
        return "no complaint";
    }
    std::string complaintOfOpening(qrv::Database::Access access) const {
        return complaint([&] { const qrv::Database database(folder_.text("a.db"), access); });
    }

    const TemporaryFolder folder_;
};

}  // namespace qrv_test
