#include <engine/base/Digest.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/history/JournalEntry.h>
#include <engine/history/ReferenceName.h>
#include <engine/history/RowsInternal.h>
#include <engine/paths/PackedUrl.h>

#include <utility>

namespace qrv {

namespace {

std::vector<TreeStep> plannedFiles(Database& database) {
    Statement query =
        database.prepare("SELECT path, before, after, size FROM plan_files ORDER BY position");
    const CheckedRow row(database, query);
    std::vector<TreeStep> files;
    while (query.step())
        files.push_back({row.path(0), row.urlOrEmpty(1), row.urlOrEmpty(2), row.sizeBytes(3)});
    return files;
}

void requireStorable(const Database& database, const TreeStep& file) {
    for (const OdString& url : {file.before, file.after})
        requireStorable(database, FileDelta{file.path, url, std::nullopt, file.sizeBytes});
}

JournalEntry::Recovery recoveryIn(const Database& database, const Statement& row, int column) {
    switch (row.integer(column)) {
        case 0:
            return JournalEntry::Recovery::finish;
        case 1:
            return JournalEntry::Recovery::rollBack;
        default:
            failDamaged(database,
                        OdString::format(tr(L"%i is no kind of recovery"), row.integer(column)));
    }
}

/// Why the entry cannot lead to its branch and commit, or nothing. Both may be empty.
std::optional<OdString> refusalOf(const JournalEntry& entry) {
    const Expected<OdString> branch = checkedReferenceName(entry.branch);
    if (!entry.branch.isEmpty() && !branch)
        return branch.error().message;
    if (!entry.commit.isEmpty() && !isDigest(entry.commit))
        return OdString::format(tr(L"'%ls' is no hash"), printable(entry.commit));
    return std::nullopt;
}

}  // namespace

std::vector<TreeStep> stepsFromHead(History& history, const OdString& commit) {
    return stepsOf(history.difference(history.note(headNote), commit));
}

JournalEntry reversed(JournalEntry entry) {
    for (TreeStep& step : entry.steps)
        std::swap(step.before, step.after);
    return entry;
}

std::optional<JournalEntry> notedEntry(History& history) {
    Database& database = history.database();
    Statement query = database.prepare("SELECT title, recovery, branch, commit_hash FROM plan");
    if (!query.step())
        return std::nullopt;
    JournalEntry entry;
    entry.title = query.text(0);
    entry.recovery = recoveryIn(database, query, 1);
    entry.branch = query.text(2);
    entry.commit = query.text(3);
    if (const std::optional<OdString> refusal = refusalOf(entry))
        failDamaged(database, *refusal);
    entry.steps = plannedFiles(database);
    return entry;
}

void noteEntry(History& history, const JournalEntry& entry) {
    Database& database = history.database();
    if (const std::optional<OdString> refusal = refusalOf(entry))
        failToKeep(database, *refusal);
    for (const TreeStep& file : entry.steps)
        requireStorable(database, file);
    DatabaseTransaction transaction(database);
    forgetEntry(history);
    database.prepare("INSERT INTO plan VALUES (1, ?, ?, ?, ?)")
        .run(entry.title, static_cast<int>(entry.recovery), entry.branch, entry.commit);
    Statement insertion = database.prepare("INSERT INTO plan_files VALUES (?, ?, ?, ?, ?)");
    int position = 0;
    for (const TreeStep& file : entry.steps)
        insertion.run(position++, file.path.text(), packedUrl(file.before), packedUrl(file.after),
                      file.sizeBytes);
    transaction.commit();
}

void forgetEntry(History& history) {
    DatabaseTransaction transaction(history.database());
    history.database().execute("DELETE FROM plan_files; DELETE FROM plan");
    transaction.commit();
}

}  // namespace qrv
