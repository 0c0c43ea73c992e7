#include <cli/Message.h>
#include <cli/Translation.h>
#include <cli/history/SchemaInternal.h>

#include <cstdint>
#include <map>
#include <memory>

namespace qrv_cli {

namespace {

constexpr int currentVersion = 1;
/// "qrvh", by which a file is told from every other SQLite file.
constexpr std::int64_t applicationId = 0x71727668;

// docs/formats/history-database.md says what the columns hold. References are to numbers, which are
// smaller than hashes, and rows that are found by their key alone live in the key's tree.
constexpr const char* schema = R"(
CREATE TABLE commits (
    number INTEGER PRIMARY KEY CHECK (number > 0),
    hash TEXT NOT NULL UNIQUE,
    author TEXT NOT NULL,
    message TEXT NOT NULL,
    time INTEGER NOT NULL
) STRICT;

CREATE TABLE parents (
    number INTEGER NOT NULL REFERENCES commits,
    position INTEGER NOT NULL,
    parent INTEGER NOT NULL REFERENCES commits,
    PRIMARY KEY (number, position),
    CHECK (parent < number)
) STRICT, WITHOUT ROWID;

CREATE TABLE changes (
    number INTEGER NOT NULL REFERENCES commits,
    path TEXT NOT NULL,
    url TEXT NOT NULL,
    previous_path TEXT NOT NULL,
    size INTEGER NOT NULL CHECK (size >= 0),
    PRIMARY KEY (number, path)
) STRICT, WITHOUT ROWID;

CREATE INDEX changes_by_path ON changes (path);

CREATE INDEX changes_by_previous_path ON changes (previous_path) WHERE previous_path <> '';

CREATE TABLE refs (
    type TEXT NOT NULL CHECK (type IN ('branch', 'tag')),
    name TEXT NOT NULL,
    number INTEGER NOT NULL REFERENCES commits,
    PRIMARY KEY (type, name)
) STRICT, WITHOUT ROWID;

CREATE TABLE head_files (
    path TEXT PRIMARY KEY,
    url TEXT NOT NULL,
    size INTEGER NOT NULL CHECK (size >= 0)
) STRICT, WITHOUT ROWID;

CREATE TABLE notes (
    name TEXT PRIMARY KEY,
    text TEXT NOT NULL
) STRICT, WITHOUT ROWID;

CREATE TABLE plan (
    id INTEGER PRIMARY KEY CHECK (id = 1),
    title TEXT NOT NULL,
    recovery INTEGER NOT NULL CHECK (recovery IN (0, 1)),
    branch TEXT NOT NULL,
    commit_hash TEXT NOT NULL
) STRICT;

CREATE TABLE plan_files (
    position INTEGER PRIMARY KEY,
    path TEXT NOT NULL,
    before TEXT NOT NULL,
    after TEXT NOT NULL,
    size INTEGER NOT NULL CHECK (size >= 0)
) STRICT;

PRAGMA application_id = 1903326824;
PRAGMA user_version = 1;
)";

std::int64_t firstNumber(Database& database, const char* sql) {
    Statement query = database.prepare(sql);
    query.step();
    return query.integer(0);
}

[[noreturn]] void refuse(const Database& database, const wchar_t* text) {
    throw DatabaseError(OdString::format(tr(text), printable(database.path())));
}

std::map<OdString, OdString> definitions(Database& database) {
    std::map<OdString, OdString> found;
    // SQLite's own entries, such as the indexes of primary keys, have no text.
    Statement entries = database.prepare("SELECT name, sql FROM sqlite_schema WHERE sql NOTNULL");
    while (entries.step())
        found[entries.text(0)] = entries.text(1);
    return found;
}

}  // namespace

bool isEmptyHistory(Database& database) {
    const std::int64_t id = firstNumber(database, "PRAGMA application_id");
    const std::int64_t version = database.schemaVersion();
    if (id == 0 && version == 0 && firstNumber(database, "SELECT count(*) FROM sqlite_schema") == 0)
        return true;
    if (id != applicationId || version < 1)
        refuse(database, translatable(L"The file '%ls' is no history of a repository"));
    if (version > currentVersion)
        refuse(database,
               translatable(L"The history '%ls' was written by a newer version of this program"));
    return false;
}

void makeHistory(Database& database) {
    DatabaseTransaction transaction(database);
    // Asked under the lock, because another process may be making it, too.
    if (!isEmptyHistory(database))
        return;
    database.execute(schema);
    transaction.commit();
}

std::vector<OdString> differencesOfSchema(Database& database) {
    const std::unique_ptr<Database> sample = Database::inMemory(database.path());
    makeHistory(*sample);
    std::map<OdString, OdString> found = definitions(database);
    std::vector<OdString> differences;
    for (const auto& [name, definition] : definitions(*sample)) {
        const auto entry = found.extract(name);
        if (entry.empty())
            differences.push_back(
                OdString::format(tr(L"the table or index '%ls' is missing"), name));
        else if (entry.mapped() != definition)
            differences.push_back(
                OdString::format(tr(L"the table or index '%ls' has another layout"), name));
    }
    for (const auto& [name, definition] : found)
        differences.push_back(OdString::format(
            tr(L"the table or index '%ls' does not belong there"), printable(name)));
    return differences;
}

}  // namespace qrv_cli
