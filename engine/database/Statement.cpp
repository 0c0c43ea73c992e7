#include <engine/database/DatabaseFailureInternal.h>
#include <engine/database/Statement.h>
#include <engine/database/StatementCacheInternal.h>
#include <engine/database/StepLimitInternal.h>

#include <sqlite3.h>

#include <string>
#include <utility>

namespace qrv {

void Statement::GiveBack::operator()(sqlite3_stmt* statement) const {
    cache->giveBack(statement);
}

Statement::Statement(sqlite3* connection, StepLimit* limit, StatementCache& cache, OdString file,
                     const char* sql)
    : connection_(connection),
      limit_(limit),
      file_(std::move(file)),
      statement_(cache.take(sql), GiveBack{&cache}) {
    if (statement_)
        return;
    sqlite3_stmt* statement = nullptr;
    // Preparing the first one reads the schema.
    const StepLimit::Scope scope(limit_, rounds_);
    check(sqlite3_prepare_v2(connection, sql, -1, &statement, nullptr));
    statement_.reset(statement);
}

bool Statement::step() {
    const StepLimit::Scope scope(limit_, rounds_);
    const int result = sqlite3_step(statement_.get());
    if (result == SQLITE_DONE) {
        // Otherwise the statement would keep its lock on the file.
        sqlite3_reset(statement_.get());
        return false;
    }
    if (result != SQLITE_ROW)
        failOnDatabase(file_, causeOf(connection_));
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

bool Statement::isBlob(int column) const {
    return sqlite3_column_type(statement_.get(), column) == SQLITE_BLOB;
}

void Statement::restart() {
    // Gives the result of the last step once more, which was told then.
    sqlite3_reset(statement_.get());
    rounds_ = 0;
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

void Statement::bindValue(int index, const std::optional<std::int64_t>& value) {
    if (value)
        bindValue(index, *value);
    else
        bindValue(index, nullptr);
}

void Statement::check(int result) const {
    if (result != SQLITE_OK)
        failOnDatabase(file_, causeOf(connection_));
}

void Statement::requireMemory() const {
    if (sqlite3_errcode(connection_) == SQLITE_NOMEM)
        failOnDatabase(file_, OdString(sqlite3_errstr(SQLITE_NOMEM)));
}

}  // namespace qrv
