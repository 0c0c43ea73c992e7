#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/database/Database.h>
#include <engine/database/DatabaseFailureInternal.h>
#include <engine/database/DatabaseFileInternal.h>
#include <engine/database/FolderVfsInternal.h>
#include <engine/database/StatementCacheInternal.h>
#include <engine/database/StepLimitInternal.h>

#include <sqlite3.h>

#include <array>
#include <filesystem>
#include <string>
#include <utility>

namespace qrv {

namespace {

constexpr int busyTimeoutMs = 10000;
constexpr const char* anyRead = "PRAGMA schema_version";
constexpr const char* readOfSchema = "SELECT 1 FROM sqlite_schema LIMIT 1";

/// A file that is missing is made before SQLite is asked.
int flagsOf(Database::Access access) {
    return access == Database::Access::readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
}

void refuseCodeInFile(sqlite3* connection) {
    sqlite3_db_config(connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
}

struct Limit {
    int kind;
    int atMost;
};

/// What no statement and no row of ours comes near to.
constexpr std::array<Limit, 9> limits = {{{SQLITE_LIMIT_LENGTH, 64 << 20},
                                          {SQLITE_LIMIT_SQL_LENGTH, 100'000},
                                          {SQLITE_LIMIT_COLUMN, 100},
                                          {SQLITE_LIMIT_EXPR_DEPTH, 20},
                                          {SQLITE_LIMIT_VDBE_OP, 25'000},
                                          {SQLITE_LIMIT_FUNCTION_ARG, 8},
                                          {SQLITE_LIMIT_ATTACHED, 0},
                                          {SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 50},
                                          {SQLITE_LIMIT_TRIGGER_DEPTH, 10}}};

void limitStatements(sqlite3* connection) {
    for (const Limit& limit : limits)
        sqlite3_limit(connection, limit.kind, limit.atMost);
}

}  // namespace

void Database::Close::operator()(sqlite3* connection) const {
    sqlite3_close_v2(connection);
}

Database::Database(const sys::Folder& folder, const std::string& relative, const OdString& path,
                   Access access)
    : path_(path) {
    const sys::Outcome<sys::NameInFolder> place = folder.openFolderOf(relative);
    if (!place)
        failOnDatabase(path_, causeOf(place.error()));
    open(place->folder, place->name, access);
}

Database::Database(const OdString& path, Access access) : path_(path) {
    const std::filesystem::path file = path.toNarrow();
    const std::filesystem::path parent = file.has_parent_path() ? file.parent_path() : ".";
    const sys::Outcome<sys::Folder> folder = sys::Folder::open(parent.native());
    if (!folder)
        failOnDatabase(path_, causeOf(folder.error()));
    open(*folder, file.filename().native(), access);
}

Database::Database(const OdString& path, InMemory) : path_(path) {
    connect(":memory:", flagsOf(Access::create));
    setUp();
}

std::unique_ptr<Database> Database::inMemory(const OdString& path) {
    // std::make_unique cannot reach the constructor.
    return std::unique_ptr<Database>(new Database(path, InMemory()));
}

// The members are destroyed in the order that they need.
Database::~Database() = default;

void Database::open(const sys::Folder& folder, const std::string& name, Access access) {
    requireOwnFiles(folder, name, path_);
    if (access == Access::create)
        makeFile(folder, name, path_);
    vfs_ = std::make_unique<FolderVfs>(folder, name);
    limit_ = std::make_unique<StepLimit>(folder, name);
    connect(name.c_str(), flagsOf(access));
    requireRollbackJournal();
    if (isHalfWritten()) {
        connect(name.c_str(), flagsOf(Access::readWrite));
        rollBack();
        connect(name.c_str(), flagsOf(access));
    }
    execute(readOfSchema);
    limit_->allowWork();
    setUp();
}

void Database::connect(const char* file, int flags) {
    sqlite3* connection = nullptr;
    const int result = sqlite3_open_v2(file, &connection, flags | SQLITE_OPEN_NOMUTEX,
                                       vfs_ ? vfs_->name() : nullptr);
    // Those of the old connection first.
    statements_ = std::make_unique<StatementCache>();
    connection_.reset(connection);
    if (result != SQLITE_OK)
        failOnDatabase(path_, OdString(connection == nullptr ? sqlite3_errstr(result)
                                                             : sqlite3_errmsg(connection)));
    sqlite3_busy_timeout(connection, busyTimeoutMs);
    refuseCodeInFile(connection);
    limitStatements(connection);
    if (limit_)
        limit_->watch(connection);
}

/// SQLite would look for a log beside the file, and say only that something cannot be opened.
void Database::requireRollbackJournal() {
    sqlite3_file* file = nullptr;
    sqlite3_file_control(connection_.get(), "main", SQLITE_FCNTL_FILE_POINTER, &file);
    constexpr int positionOfVersions = 18;
    constexpr char versionOfLog = 2;
    std::array<char, 2> versions{};
    const int result =
        file->pMethods->xRead(file, versions.data(), versions.size(), positionOfVersions);
    if (result == SQLITE_OK && (versions[0] == versionOfLog || versions[1] == versionOfLog))
        failOnDatabase(path_,
                       tr(L"it has a write-ahead log, which no command of this program makes"));
}

/// Whether there is a journal to play back, which this connection cannot do.
bool Database::isHalfWritten() {
    const int result = sqlite3_exec(connection_.get(), anyRead, nullptr, nullptr, nullptr);
    if (result == SQLITE_OK)
        return false;
    if (sqlite3_extended_errcode(connection_.get()) != SQLITE_READONLY_ROLLBACK)
        failOnDatabase(path_, causeOf(connection_.get()));
    return true;
}

/// Rolls back what a killed process had begun to write.
void Database::rollBack() {
    const int result = sqlite3_exec(connection_.get(), anyRead, nullptr, nullptr, nullptr);
    if (result == SQLITE_READONLY || result == SQLITE_CANTOPEN)
        failOnDatabase(
            path_, tr(L"a command was interrupted while it wrote, and this cannot be taken back "
                      L"where nothing can be written; copy the repository to another disk"));
    if (result != SQLITE_OK)
        failOnDatabase(path_, causeOf(connection_.get()));
}

void Database::setUp() {
    // EXTRA also flushes the folder when the journal is gone, without which a commit can come
    // undone.
    execute(
        "PRAGMA synchronous=EXTRA; PRAGMA foreign_keys=ON; PRAGMA cell_size_check=ON;"
        "PRAGMA temp_store=MEMORY");
}

void Database::execute(const char* sql) {
    std::int64_t rounds = 0;
    const StepLimit::Scope scope(limit_.get(), rounds);
    if (sqlite3_exec(connection_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        failOnDatabase(path_, causeOf(connection_.get()));
}

Statement Database::prepare(const char* sql) {
    return {connection_.get(), limit_.get(), *statements_, path_, sql};
}

std::int64_t Database::schemaVersion() {
    Statement version = prepare("PRAGMA user_version");
    version.step();
    return version.integer(0);
}

void Database::setSchemaVersion(int version) {
    execute(("PRAGMA user_version=" + std::to_string(version)).c_str());
}

OdString Database::damage() {
    Statement check = prepare("PRAGMA integrity_check");
    OdString problems;
    while (check.step()) {
        const OdString problem = check.text(0);
        if (problem == OdString(L"ok"))
            continue;
        if (!problems.isEmpty())
            problems += L"\n";
        problems += problem;
    }
    return problems;
}

bool Database::isInTransaction() const {
    return sqlite3_get_autocommit(connection_.get()) == 0;
}

DatabaseTransaction::DatabaseTransaction(Database& database)
    : database_(database), isNested_(database.isInTransaction()) {
    // A name means the innermost savepoint that has it.
    database.execute(isNested_ ? "SAVEPOINT part" : "BEGIN IMMEDIATE");
}

DatabaseTransaction::~DatabaseTransaction() {
    if (!isOpen_)
        return;
    try {
        database_.execute(isNested_ ? "ROLLBACK TO part; RELEASE part" : "ROLLBACK");
    } catch (const DatabaseError&) {
        // SQLite rolled back by itself when the failure was grave; closing the file does it at
        // last.
        isOpen_ = false;
    }
}

void DatabaseTransaction::commit() {
    database_.execute(isNested_ ? "RELEASE part" : "COMMIT");
    isOpen_ = false;
}

}  // namespace qrv
