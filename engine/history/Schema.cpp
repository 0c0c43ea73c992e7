#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/database/Schema.h>
#include <engine/history/HeadChangesInternal.h>
#include <engine/history/SchemaInternal.h>
#include <engine/history/SumsInternal.h>

#include <cstdint>
#include <iterator>
#include <span>
#include <string>
#include <vector>

namespace qrv {

namespace {

constexpr int currentVersion = layoutWithPackedUrls;
/// "qrvh", by which a file is told from every other SQLite file.
constexpr std::int64_t applicationId = 0x71727668;

constexpr const char* changesByPath = "CREATE INDEX changes_by_path ON changes (path)";
constexpr const char* changesByPreviousPath =
    "CREATE INDEX changes_by_previous_path ON changes (previous_path) WHERE previous_path <> ''";

// docs/formats/history-database.md says what the columns hold. References are to numbers, which are
// smaller than hashes, and rows that are found by their key alone live in the key's tree.
constexpr SchemaEntry tablesOfAllLayouts[] = {
    {"commits", R"(CREATE TABLE commits (
    number INTEGER PRIMARY KEY CHECK (number > 0),
    hash TEXT NOT NULL UNIQUE,
    author TEXT NOT NULL,
    message TEXT NOT NULL,
    time INTEGER NOT NULL
) STRICT)"},
    {"parents", R"(CREATE TABLE parents (
    number INTEGER NOT NULL REFERENCES commits,
    position INTEGER NOT NULL,
    parent INTEGER NOT NULL REFERENCES commits,
    PRIMARY KEY (number, position),
    CHECK (parent < number)
) STRICT, WITHOUT ROWID)"},
    {"refs", R"(CREATE TABLE refs (
    type TEXT NOT NULL CHECK (type IN ('branch', 'tag')),
    name TEXT NOT NULL,
    number INTEGER NOT NULL REFERENCES commits,
    PRIMARY KEY (type, name)
) STRICT, WITHOUT ROWID)"},
    {"notes", R"(CREATE TABLE notes (
    name TEXT PRIMARY KEY,
    text TEXT NOT NULL
) STRICT, WITHOUT ROWID)"},
    {"plan", R"(CREATE TABLE plan (
    id INTEGER PRIMARY KEY CHECK (id = 1),
    title TEXT NOT NULL,
    recovery INTEGER NOT NULL CHECK (recovery IN (0, 1)),
    branch TEXT NOT NULL,
    commit_hash TEXT NOT NULL
) STRICT)"},
};

constexpr SchemaEntry packedTables[] = {
    {"changes", R"(CREATE TABLE changes (
    number INTEGER NOT NULL REFERENCES commits,
    path TEXT NOT NULL,
    url BLOB NOT NULL,
    previous_path TEXT NOT NULL,
    size INTEGER NOT NULL CHECK (size >= 0),
    PRIMARY KEY (number, path)
) STRICT, WITHOUT ROWID)"},
    {"changes_by_path", changesByPath},
    {"changes_by_previous_path", changesByPreviousPath},
    {"head_files", R"(CREATE TABLE head_files (
    path TEXT PRIMARY KEY,
    url BLOB NOT NULL,
    size INTEGER NOT NULL CHECK (size >= 0),
    number INTEGER,
    modified INTEGER,
    changed INTEGER
) STRICT, WITHOUT ROWID)"},
    {"head_changes", R"(CREATE TABLE head_changes (
    sequence INTEGER PRIMARY KEY,
    mark INTEGER NOT NULL,
    path TEXT NOT NULL
) STRICT)"},
    {"lines", R"(CREATE TABLE lines (
    number INTEGER PRIMARY KEY REFERENCES commits,
    line INTEGER NOT NULL
) STRICT)"},
    {"lines_by_line", "CREATE INDEX lines_by_line ON lines (line)"},
    {"plan_files", R"(CREATE TABLE plan_files (
    position INTEGER PRIMARY KEY,
    path TEXT NOT NULL,
    before BLOB NOT NULL,
    after BLOB NOT NULL,
    size INTEGER NOT NULL CHECK (size >= 0)
) STRICT)"},
};

/// Of the layouts before, in which a URL is a text.
constexpr SchemaEntry textTables[] = {
    {"changes", R"(CREATE TABLE changes (
    number INTEGER NOT NULL REFERENCES commits,
    path TEXT NOT NULL,
    url TEXT NOT NULL,
    previous_path TEXT NOT NULL,
    size INTEGER NOT NULL CHECK (size >= 0),
    PRIMARY KEY (number, path)
) STRICT, WITHOUT ROWID)"},
    {"changes_by_path", changesByPath},
    {"changes_by_previous_path", changesByPreviousPath},
    {"head_files", R"(CREATE TABLE head_files (
    path TEXT PRIMARY KEY,
    url TEXT NOT NULL,
    size INTEGER NOT NULL CHECK (size >= 0)
) STRICT, WITHOUT ROWID)"},
    {"plan_files", R"(CREATE TABLE plan_files (
    position INTEGER PRIMARY KEY,
    path TEXT NOT NULL,
    before TEXT NOT NULL,
    after TEXT NOT NULL,
    size INTEGER NOT NULL CHECK (size >= 0)
) STRICT)"},
};

std::vector<SchemaEntry> layoutOf(std::int64_t version) {
    std::vector<SchemaEntry> layout(std::begin(tablesOfAllLayouts), std::end(tablesOfAllLayouts));
    const std::span<const SchemaEntry> others = version < layoutWithPackedUrls
                                                    ? std::span<const SchemaEntry>(textTables)
                                                    : std::span<const SchemaEntry>(packedTables);
    layout.insert(layout.end(), others.begin(), others.end());
    return layout;
}

std::int64_t firstNumber(Database& database, const char* sql) {
    Statement query = database.prepare(sql);
    query.step();
    return query.integer(0);
}

[[noreturn]] void refuse(const Database& database, const wchar_t* text) {
    throw DatabaseError(OdString::format(tr(text), printable(database.path())));
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
    requireSchema(layoutOf(version), database);
    return false;
}

void makeHistory(Database& database) {
    DatabaseTransaction transaction(database);
    // Asked under the lock, because another process may be making it, too.
    if (!isEmptyHistory(database))
        return;
    makeSchema(database, tablesOfAllLayouts);
    makePackedTables(database);
    database.execute(("PRAGMA application_id = " + std::to_string(applicationId)).c_str());
    database.setSchemaVersion(currentVersion);
    renewSum(database);
    transaction.commit();
}

void makePackedTables(Database& database) {
    makeSchema(database, packedTables);
    beginHeadChanges(database);
}

std::vector<OdString> differencesOfSchema(Database& database) {
    return differencesFrom(layoutOf(database.schemaVersion()), database);
}

}  // namespace qrv
