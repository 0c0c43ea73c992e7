#pragma once

#include <engine/database/Statement.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

#include <cstdint>
#include <memory>
#include <string>

struct sqlite3;

namespace qrv {

class FolderVfs;
class StepLimit;

/// One SQLite file. It has a rollback journal and no write-ahead log, so that it works on a network
/// share and is one file when nobody writes; what a commit has written is on the disk.
///
/// The file may come from a stranger. SQLite reaches nothing but it and its journal, beneath the
/// open folder; what else lies beside it and could be taken for a part of it is refused. Triggers,
/// views and functions in the schema are switched off; `requireSchema` sees to its checks. What no
/// honest file of that size can need, a statement may not take. Temporary tables and indexes stay
/// in memory.
///
/// Every operation may throw `DatabaseError`. A database and its statements are used by one thread
/// at a time.
class Database {
public:
    enum class Access { readOnly, readWrite, create };

    /// Opens the file `relative` beneath the folder, or makes it with `create`; `path` is its name
    /// in messages. Neither the file nor a folder on the way may be a link. What a killed process
    /// had begun to write is rolled back, also with `readOnly`; where the medium cannot be written
    /// that is an error, while a file without a journal can be read there.
    Database(const sys::Folder& folder, const std::string& relative, const OdString& path,
             Access access);
    /// The same for a path; its folders may be links.
    Database(const OdString& path, Access access);
    ~Database();
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
    void open(const sys::Folder& folder, const std::string& name, Access access);
    void connect(const char* file, int flags);
    void requireRollbackJournal();
    bool isHalfWritten();
    void rollBack();
    void setUp();

    OdString path_;
    // Used by the connection to its end. Null for a database in memory.
    std::unique_ptr<FolderVfs> vfs_;
    std::unique_ptr<StepLimit> limit_;
    std::unique_ptr<sqlite3, Close> connection_;
    std::unique_ptr<StatementCache> statements_;
};

/// A guard of changes to a database: unless it is committed, its end rolls them back. Inside
/// another one it is a part of that: what it commits counts when the outer one does, and what it
/// rolls back are its own changes.
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

}  // namespace qrv
