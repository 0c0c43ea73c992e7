#pragma once

#include <platform/kernel/OdError.h>
#include <platform/kernel/OdString.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace qrv_cli {

/// What SQLite said, behind the name of the file. Thrown, because after it no step of the work that
/// led there can go on; the storages and the program's one translator of failures catch it.
class DatabaseError : public OdError {
public:
    using OdError::OdError;
};

/// A prepared statement. Parameters are given in the order in which they stand in its text.
///
///     Statement files = database.prepare("SELECT path, size FROM files WHERE size > ?");
///     files.bind(100);
///     while (files.step())
///         use(files.text(0), files.integer(1));
///
/// Every operation may throw `DatabaseError`. A row's bytes live until the next step.
class Statement {
public:
    /// Starts the statement again with these values: whole numbers, texts (UTF-8 in the database)
    /// or bytes.
    template <class... Values>
    void bind(const Values&... values) {
        restart();
        int index = 0;
        (bindValue(++index, values), ...);
    }
    /// Binds and runs a statement that gives no rows.
    template <class... Values>
    void run(const Values&... values) {
        bind(values...);
        step();
    }
    /// Goes to the next row; false behind the last one.
    bool step();

    /// The value of the row's column, counted from 0, turned into the kind that is asked for; 0 or
    /// empty where there is none.
    std::int64_t integer(int column) const;
    OdString text(int column) const;
    /// Of a text its UTF-8.
    std::string_view bytes(int column) const;
    bool isNull(int column) const;

private:
    friend class Database;

    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };

    Statement(sqlite3* connection, OdString file, const char* sql);
    void restart();
    void bindValue(int index, std::int64_t value);
    void bindValue(int index, int value) { bindValue(index, std::int64_t{value}); }
    void bindValue(int index, const OdString& value);
    void bindValue(int index, std::string_view bytes);
    void bindValue(int index, std::nullptr_t);
    void check(int result) const;
    void requireMemory() const;

    sqlite3* connection_;
    OdString file_;
    std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

/// One SQLite file. It has a rollback journal and no write-ahead log, so that it works on a network
/// share and is one file when nobody writes; what a commit has written is on the disk. What a
/// hostile file could bring along (triggers, views, functions in the schema) is switched off.
///
/// Every operation may throw `DatabaseError`. A database and its statements are used by one thread
/// at a time.
class Database {
public:
    enum class Access { readOnly, readWrite, create };

    /// Opens the file, or makes it with `create`. The folders on the way may be symbolic links, the
    /// file itself may not, nor anything else but a regular file. What a killed process had begun
    /// to write is taken back, also with `readOnly`.
    Database(const OdString& path, Access access);
    /// A database that lives in memory, and is called `path` in messages.
    static std::unique_ptr<Database> inMemory(const OdString& path);

    const OdString& path() const { return path_; }
    /// Runs statements without parameters and results.
    void execute(const char* sql);
    /// Makes a statement ready to run; it must end before the database does.
    Statement prepare(const char* sql);
    /// The number of the layout that the file has; 0 in a new file.
    std::int64_t schemaVersion();
    void setSchemaVersion(int version);
    /// What SQLite finds wrong with the file's pages, one problem a line; empty when nothing.
    OdString damage();
    bool isInTransaction() const;

private:
    struct Close {
        void operator()(sqlite3* connection) const;
    };
    struct InMemory {};

    Database(const OdString& path, InMemory);
    void connect(const char* file, int flags);
    void setUp();

    OdString path_;
    std::unique_ptr<sqlite3, Close> connection_;
};

/// A guard of changes to a database: unless it is committed, its end takes them back. Inside
/// another one it is a part of that: what it commits counts when the outer one does, and what it
/// takes back are its own changes.
class DatabaseTransaction {
public:
    /// From here on nobody else writes to the file. Throws `DatabaseError`, also when another
    /// process keeps writing for ten seconds.
    [[nodiscard]] explicit DatabaseTransaction(Database& database);
    DatabaseTransaction(const DatabaseTransaction&) = delete;
    DatabaseTransaction& operator=(const DatabaseTransaction&) = delete;
    ~DatabaseTransaction();

    /// On a failure, which is thrown, nothing of it is done.
    void commit();

private:
    Database& database_;
    bool isNested_;
    bool isOpen_ = true;
};

}  // namespace qrv_cli
