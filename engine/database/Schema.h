#pragma once

#include <engine/database/Database.h>
#include <platform/kernel/OdString.h>

#include <span>
#include <vector>

namespace qrv {

/// A table or index, and the statement that makes it, without a semicolon.
struct SchemaEntry {
    const char* name;
    const char* statement;
};

/// Makes them all. Runs inside a transaction of the caller.
void makeSchema(Database& database, std::span<const SchemaEntry> entries);

/// How the tables, indexes and so on of the file differ from these, one text for each that does.
std::vector<OdString> differencesFrom(std::span<const SchemaEntry> entries, Database& database);

/// Throws `DatabaseError` when they differ. Whoever uses a database asks this first, because a
/// schema is code: its checks, its generated columns and its indexes on expressions run with each
/// row that is written, and can take all time and memory.
void requireSchema(std::span<const SchemaEntry> entries, Database& database);

}  // namespace qrv
