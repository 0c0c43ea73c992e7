#include <engine/history/LinesInternal.h>
#include <engine/history/SchemaInternal.h>
#include <engine/history/SumsInternal.h>
#include <engine/history/UpgradeInternal.h>
#include <engine/paths/PackedUrl.h>

#include <cstdint>
#include <string>

namespace qrv {

namespace {

/// One that cannot be read as a whole does without the sum of the sizes.
OdString sumOfSizes(History& history) try {
    OdString sizes;
    const std::int64_t last = history.lastNumber();
    for (std::int64_t number = 1; number <= last; ++number) {
        if (const std::optional<CommitEntry> entry = history.commitByNumber(number))
            sizes = continuedSizes(sizes, entry->hash, history.deltas(entry->hash));
    }
    return sizes;
} catch (const DatabaseError&) {
    return {};
}

void addSums(History& history) {
    const OdString sizes = sumOfSizes(history);
    history.database().setSchemaVersion(layoutWithSums);
    setGeneration(history.database(), 1);
    setSizes(history.database(), sizes);
}

/// A URL as it goes into the tables of today, from the text of those before.
std::string packed(const Statement& row, int column) {
    return packedUrl(row.text(column));
}

void copyChanges(Database& database) {
    Statement rows = database.prepare(
        "SELECT number, path, url, previous_path, size FROM changes_before ORDER BY number, path");
    Statement insertion = database.prepare("INSERT INTO changes VALUES (?, ?, ?, ?, ?)");
    while (rows.step())
        insertion.run(rows.integer(0), rows.text(1), packed(rows, 2), rows.text(3),
                      rows.integer(4));
}

void copyHeadFiles(Database& database) {
    Statement rows =
        database.prepare("SELECT path, url, size FROM head_files_before ORDER BY path");
    Statement insertion =
        database.prepare("INSERT INTO head_files VALUES (?, ?, ?, NULL, NULL, NULL)");
    while (rows.step())
        insertion.run(rows.text(0), packed(rows, 1), rows.integer(2));
}

void copyPlanFiles(Database& database) {
    Statement rows = database.prepare(
        "SELECT position, path, before, after, size FROM plan_files_before ORDER BY position");
    Statement insertion = database.prepare("INSERT INTO plan_files VALUES (?, ?, ?, ?, ?)");
    while (rows.step())
        insertion.run(rows.integer(0), rows.text(1), packed(rows, 2), packed(rows, 3),
                      rows.integer(4));
}

void packUrls(Database& database) {
    database.execute(
        "DROP INDEX changes_by_path; DROP INDEX changes_by_previous_path;"
        "ALTER TABLE changes RENAME TO changes_before;"
        "ALTER TABLE head_files RENAME TO head_files_before;"
        "ALTER TABLE plan_files RENAME TO plan_files_before");
    makePackedTables(database);
    copyChanges(database);
    copyHeadFiles(database);
    copyPlanFiles(database);
    addAllLines(database);
    database.execute(
        "DROP TABLE changes_before; DROP TABLE head_files_before; DROP TABLE plan_files_before");
    database.setSchemaVersion(layoutWithPackedUrls);
}

}  // namespace

void upgrade(History& history) {
    Database& database = history.database();
    if (database.schemaVersion() >= layoutWithPackedUrls)
        return;
    DatabaseTransaction transaction(database);
    // Asked again under the lock: another process may have been quicker.
    const std::int64_t version = database.schemaVersion();
    if (version >= layoutWithPackedUrls)
        return;
    if (version < layoutWithSums)
        addSums(history);
    packUrls(database);
    transaction.commit();
}

}  // namespace qrv
