#include <cli/Message.h>
#include <cli/Translation.h>
#include <cli/database/Database.h>
#include <platform/sys/Folder.h>

#include <sqlite3.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

namespace qrv_cli {

namespace fs = std::filesystem;

namespace {

constexpr int busyTimeoutMs = 10000;
constexpr const char* anyRead = "PRAGMA schema_version";

[[noreturn]] void fail(const OdString& file, const OdString& cause) {
    throw DatabaseError(
        OdString::format(tr(L"The database '%ls' cannot be used: %ls"), printable(file), cause));
}

int flagsOf(Database::Access access) {
    switch (access) {
        case Database::Access::readOnly:
            return SQLITE_OPEN_READONLY;
        case Database::Access::readWrite:
            return SQLITE_OPEN_READWRITE;
        case Database::Access::create:
            break;
    }
    return SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
}

/// SQLite, told not to follow links, follows none on the whole way; here the folders may be links.
std::string withoutLinkedFolders(const OdString& path) {
    const fs::path file = path.toNarrow();
    std::error_code error;
    const fs::path folder = fs::canonical(file.parent_path(), error);
    if (error)
        fail(path, OdString(error.message().c_str()));
    return folder / file.filename();
}

/// Opening a pipe would wait for its other end.
void requireRegularFile(const OdString& path, const std::string& file) {
    std::error_code error;
    const fs::file_status status = fs::symlink_status(file, error);
    if (fs::exists(status) && !fs::is_regular_file(status))
        fail(path, tr(L"it is not a regular file"));
}

/// SQLite makes files that only their owner may write to, even where the mask lets the group. A
/// failure is left to SQLite, which meets it again and tells.
void makeIfMissing(const fs::path& file) {
    constexpr std::uint32_t permissions = 0666;
    const sys::Outcome<sys::Folder> folder = sys::Folder::open(file.parent_path().native());
    const std::string name = file.filename().native();
    if (!folder || folder->status(name))
        return;
    sys::Outcome<sys::NewFile> made = folder->newFile(name, permissions);
    if (made)
        static_cast<void>(made->publish(sys::NewFile::Existing::keep));
}

void refuseCodeInFile(sqlite3* connection) {
    sqlite3_db_config(connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
}

/// Whether there is a journal to play back, which a connection that only reads cannot do.
bool isHalfWritten(sqlite3* connection) {
    sqlite3_exec(connection, anyRead, nullptr, nullptr, nullptr);
    return sqlite3_extended_errcode(connection) == SQLITE_READONLY_ROLLBACK;
}

}  // namespace

void Statement::Finalize::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

Statement::Statement(sqlite3* connection, OdString file, const char* sql)
    : connection_(connection), file_(std::move(file)) {
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v2(connection, sql, -1, &statement, nullptr));
    statement_.reset(statement);
}

bool Statement::step() {
    const int result = sqlite3_step(statement_.get());
    if (result == SQLITE_DONE) {
        // Otherwise the statement would keep its lock on the file.
        sqlite3_reset(statement_.get());
        return false;
    }
    if (result != SQLITE_ROW)
        fail(file_, OdString(sqlite3_errmsg(connection_)));
    return true;
}

std::int64_t Statement::integer(int column) const {
    return sqlite3_column_int64(statement_.get(), column);
}

OdString Statement::text(int column) const {
    return OdString::fromNarrow(bytes(column));
}

std::string_view Statement::bytes(int column) const {
    sqlite3_stmt* const row = statement_.get();
    // A text asked for as a blob comes as it stands in the file, also where that is UTF-16; a blob
    // asked for as a text is copied, to put a NUL behind it.
    const void* const begin = sqlite3_column_type(row, column) == SQLITE_BLOB
                                  ? sqlite3_column_blob(row, column)
                                  : sqlite3_column_text(row, column);
    const int size = sqlite3_column_bytes(row, column);
    if (begin == nullptr) {
        requireMemory();
        return {};
    }
    return {static_cast<const char*>(begin), static_cast<std::size_t>(size)};
}

bool Statement::isNull(int column) const {
    return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

void Statement::restart() {
    // Gives the result of the last step once more, which was told then.
    sqlite3_reset(statement_.get());
}

void Statement::bindValue(int index, std::int64_t value) {
    check(sqlite3_bind_int64(statement_.get(), index, value));
}

void Statement::bindValue(int index, const OdString& value) {
    const std::string utf8 = value.toNarrow();
    check(sqlite3_bind_text64(statement_.get(), index, utf8.data(), utf8.size(), SQLITE_TRANSIENT,
                              SQLITE_UTF8));
}

void Statement::bindValue(int index, std::string_view bytes) {
    // An empty view may have no address, which SQLite would take for NULL.
    const char* const begin = bytes.empty() ? "" : bytes.data();
    check(sqlite3_bind_blob64(statement_.get(), index, begin, bytes.size(), SQLITE_TRANSIENT));
}

void Statement::bindValue(int index, std::nullptr_t) {
    check(sqlite3_bind_null(statement_.get(), index));
}

void Statement::check(int result) const {
    if (result != SQLITE_OK)
        fail(file_, OdString(sqlite3_errmsg(connection_)));
}

void Statement::requireMemory() const {
    if (sqlite3_errcode(connection_) == SQLITE_NOMEM)
        fail(file_, OdString(sqlite3_errstr(SQLITE_NOMEM)));
}

void Database::Close::operator()(sqlite3* connection) const {
    sqlite3_close_v2(connection);
}

Database::Database(const OdString& path, Access access) : path_(path) {
    const std::string file = withoutLinkedFolders(path);
    requireRegularFile(path, file);
    requireRegularFile(path + L"-journal", file + "-journal");
    if (access == Access::create)
        makeIfMissing(file);
    connect(file.c_str(), flagsOf(access) | SQLITE_OPEN_NOFOLLOW);
    if (access == Access::readOnly && isHalfWritten(connection_.get())) {
        connect(file.c_str(), flagsOf(Access::readWrite) | SQLITE_OPEN_NOFOLLOW);
        execute(anyRead);
        connect(file.c_str(), flagsOf(Access::readOnly) | SQLITE_OPEN_NOFOLLOW);
    }
    setUp();
}

Database::Database(const OdString& path, InMemory) : path_(path) {
    connect(":memory:", flagsOf(Access::create));
    setUp();
}

std::unique_ptr<Database> Database::inMemory(const OdString& path) {
    // std::make_unique cannot reach the constructor.
    return std::unique_ptr<Database>(new Database(path, InMemory()));
}

void Database::connect(const char* file, int flags) {
    sqlite3* connection = nullptr;
    const int result = sqlite3_open_v2(file, &connection, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    connection_.reset(connection);
    if (result != SQLITE_OK)
        fail(path_,
             OdString(connection == nullptr ? sqlite3_errstr(result) : sqlite3_errmsg(connection)));
    sqlite3_busy_timeout(connection, busyTimeoutMs);
    refuseCodeInFile(connection);
}

void Database::setUp() {
    // EXTRA also flushes the folder when the journal is gone, without which a commit can come
    // undone.
    execute("PRAGMA synchronous=EXTRA; PRAGMA foreign_keys=ON; PRAGMA cell_size_check=ON");
}

void Database::execute(const char* sql) {
    if (sqlite3_exec(connection_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        fail(path_, OdString(sqlite3_errmsg(connection_.get())));
}

Statement Database::prepare(const char* sql) {
    return {connection_.get(), path_, sql};
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

}  // namespace qrv_cli
