#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/database/Schema.h>

#include <map>

namespace qrv {

namespace {

/// The statements by the names of what they make. SQLite makes the indexes of primary keys by
/// itself, and keeps no text for them.
std::map<OdString, OdString> statementsOf(Database& database) {
    std::map<OdString, OdString> found;
    Statement entries = database.prepare("SELECT name, sql FROM sqlite_schema WHERE sql NOTNULL");
    while (entries.step())
        found[entries.text(0)] = entries.text(1);
    return found;
}

}  // namespace

void makeSchema(Database& database, std::span<const SchemaEntry> entries) {
    for (const SchemaEntry& entry : entries)
        database.execute(entry.statement);
}

std::vector<OdString> differencesFrom(std::span<const SchemaEntry> entries, Database& database) {
    std::map<OdString, OdString> found = statementsOf(database);
    std::vector<OdString> differences;
    for (const SchemaEntry& expected : entries) {
        const OdString name(expected.name);
        const auto entry = found.extract(name);
        if (entry.empty())
            differences.push_back(
                OdString::format(tr(L"the table or index '%ls' is missing"), name));
        else if (entry.mapped() != OdString(expected.statement))
            differences.push_back(
                OdString::format(tr(L"the table or index '%ls' has another layout"), name));
    }
    for (const auto& [name, statement] : found)
        differences.push_back(OdString::format(
            tr(L"the table or index '%ls' does not belong there"), printable(name)));
    return differences;
}

void requireSchema(std::span<const SchemaEntry> entries, Database& database) {
    const std::vector<OdString> differences = differencesFrom(entries, database);
    if (!differences.empty())
        throw DatabaseError(OdString::format(tr(L"The database '%ls' cannot be used: %ls"),
                                             printable(database.path()), differences.front()));
}

}  // namespace qrv
