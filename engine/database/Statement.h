#pragma once

#include <platform/kernel/OdError.h>
#include <platform/kernel/OdString.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace qrv {

class StatementCache;
class StepLimit;

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
    /// Starts the statement again with these values: whole numbers, which may be missing, texts
    /// (UTF-8 in the database) or bytes.
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
    /// Whether the value is bytes, and no text.
    bool isBlob(int column) const;

private:
    friend class Database;

    struct GiveBack {
        StatementCache* cache = nullptr;
        void operator()(sqlite3_stmt* statement) const;
    };

    Statement(sqlite3* connection, StepLimit* limit, StatementCache& cache, OdString file,
              const char* sql);
    void restart();
    void bindValue(int index, std::int64_t value);
    void bindValue(int index, int value) { bindValue(index, std::int64_t{value}); }
    void bindValue(int index, const OdString& value);
    void bindValue(int index, std::string_view bytes);
    void bindValue(int index, std::nullptr_t);
    void bindValue(int index, const std::optional<std::int64_t>& value);
    void check(int result) const;
    void requireMemory() const;

    sqlite3* connection_;
    // Null for a database in memory.
    StepLimit* limit_;
    std::int64_t rounds_ = 0;
    OdString file_;
    std::unique_ptr<sqlite3_stmt, GiveBack> statement_;
};

}  // namespace qrv
