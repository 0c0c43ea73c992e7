#include <engine/database/StatementCacheInternal.h>

#include <sqlite3.h>

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace qrv {

namespace {

/// More than any command asks in turns.
constexpr std::size_t mostIdle = 32;

/// Some pragmas do their work when they are made ready, and not when they run. That of the layout's
/// number, which is asked before much else, is none of them.
bool mayRunAgain(std::string_view sql) {
    return !sql.starts_with("PRAGMA") || sql == "PRAGMA user_version";
}

}  // namespace

StatementCache::~StatementCache() {
    for (sqlite3_stmt* const statement : idle_)
        sqlite3_finalize(statement);
}

sqlite3_stmt* StatementCache::take(std::string_view sql) {
    const auto found = std::find_if(idle_.rbegin(), idle_.rend(), [sql](sqlite3_stmt* statement) {
        return sql == sqlite3_sql(statement);
    });
    if (found == idle_.rend())
        return nullptr;
    sqlite3_stmt* const statement = *found;
    idle_.erase(std::next(found).base());
    return statement;
}

void StatementCache::giveBack(sqlite3_stmt* statement) {
    if (!mayRunAgain(sqlite3_sql(statement))) {
        sqlite3_finalize(statement);
        return;
    }
    // It must hold no lock, and no texts of whoever had it.
    sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
    if (idle_.size() == mostIdle) {
        sqlite3_finalize(idle_.front());
        idle_.erase(idle_.begin());
    }
    idle_.push_back(statement);
}

}  // namespace qrv
