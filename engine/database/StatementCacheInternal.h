#pragma once

#include <string_view>
#include <vector>

struct sqlite3_stmt;

namespace qrv {

/// Statements of one connection that have ended and may be run again. Making a statement ready
/// takes many times longer than most of them run, and a command asks the same for each file.
class StatementCache {
public:
    StatementCache() = default;
    StatementCache(const StatementCache&) = delete;
    StatementCache& operator=(const StatementCache&) = delete;
    /// Before the connection is closed.
    ~StatementCache();

    /// A statement of that text, which belongs to the caller then; null when there is none.
    sqlite3_stmt* take(std::string_view sql);
    /// Takes over a statement that has ended: keeps it for the next one who asks, or frees it.
    void giveBack(sqlite3_stmt* statement);

private:
    // The one that was given back last comes last.
    std::vector<sqlite3_stmt*> idle_;
};

}  // namespace qrv
