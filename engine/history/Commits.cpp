#include <engine/base/Translation.h>
#include <engine/history/History.h>
#include <engine/history/LinesInternal.h>
#include <engine/history/RowsInternal.h>
#include <engine/history/SumsInternal.h>
#include <engine/paths/PackedUrl.h>

#include <algorithm>
#include <set>
#include <string>

namespace qrv {

namespace {

std::vector<OdString> parentsOf(Database& database, std::int64_t number) {
    Statement query = database.prepare(
        "SELECT parent, hash FROM parents LEFT JOIN commits ON commits.number = parent "
        "WHERE parents.number = ? ORDER BY position");
    query.bind(number);
    const CheckedRow row(database, query);
    std::vector<OdString> parents;
    while (query.step()) {
        parents.push_back(query.isNull(1) ? OdString() : row.hash(1));
        if (parents.back().isEmpty() || row.number(0) >= number)
            failBuildsOn(database, number, query.integer(0));
    }
    return parents;
}

/// The commits that the condition, with its values, selects.
template <class... Values>
std::vector<CommitEntry> select(Database& database, const std::string& condition,
                                const Values&... values) {
    Statement query = database.prepare(
        ("SELECT number, hash, author, message, time FROM commits WHERE " + condition).c_str());
    query.bind(values...);
    std::vector<CommitEntry> entries;
    while (query.step())
        entries.push_back(entryWithoutParents(CheckedRow(database, query)));
    for (CommitEntry& entry : entries)
        entry.parents = parentsOf(database, entry.number);
    return entries;
}

std::optional<CommitEntry> firstOf(std::vector<CommitEntry> entries) {
    if (entries.empty())
        return std::nullopt;
    return std::move(entries.front());
}

void requireStorable(const Database& database, const NewCommit& commit) {
    if (!isTimeInRange(commit.timeSeconds))
        failToKeep(database,
                   OdString::format(tr(L"%i is no time of a commit"), commit.timeSeconds));
    const std::set<OdString> parents(commit.parents.begin(), commit.parents.end());
    if (parents.size() != commit.parents.size())
        failToKeep(database, tr(L"a commit builds on another one twice"));
    for (const FileDelta& delta : commit.deltas)
        requireStorable(database, delta);
}

void insertParents(Database& database, std::int64_t number, const NewCommit& commit) {
    Statement insertion = database.prepare("INSERT INTO parents VALUES (?, ?, ?)");
    int position = 0;
    for (const OdString& parent : commit.parents)
        insertion.run(number, position++, numberOf(database, parent));
}

void insertChanges(Database& database, std::int64_t number, const NewCommit& commit) {
    Statement insertion = database.prepare("INSERT INTO changes VALUES (?, ?, ?, ?, ?)");
    // In the order of the table, or nearly so: its pages become full.
    for (const FileDelta* delta : orderedByPath(commit.deltas))
        insertion.run(number, delta->path.text(), packedUrl(delta->url),
                      delta->previousPath ? delta->previousPath->text() : OdString(),
                      delta->sizeBytes);
}

}  // namespace

std::optional<CommitEntry> History::commit(const OdString& hash) {
    return firstOf(select(*database_, "hash = ?", hash));
}

std::optional<CommitEntry> History::commitByNumber(std::int64_t number) {
    return firstOf(select(*database_, "number = ?", number));
}

std::vector<CommitEntry> History::commitsByPrefix(const OdString& prefix, int limit) {
    // "g" comes behind all digits. The plus sign keeps SQLite from walking through all commits,
    // only to have them in order.
    return select(*database_, "hash >= ? AND hash < ? ORDER BY +number LIMIT ?", prefix,
                  prefix + L'g', limit);
}

std::int64_t History::lastNumber() {
    Statement query = database_->prepare("SELECT max(number) FROM commits");
    query.step();
    return query.isNull(0) ? 0 : CheckedRow(*database_, query).number(0);
}

std::vector<FileDelta> History::deltas(const OdString& hash) {
    Statement query = database_->prepare(
        "SELECT path, url, previous_path, size FROM changes WHERE number = ? ORDER BY path");
    query.bind(numberOf(*database_, hash));
    std::vector<FileDelta> deltas;
    while (query.step())
        deltas.push_back(toDelta(CheckedRow(*database_, query)));
    // SQLite orders by bytes, which for characters beyond U+FFFF is not the order of texts.
    std::sort(deltas.begin(), deltas.end(),
              [](const auto& left, const auto& right) { return left.path < right.path; });
    return deltas;
}

std::vector<std::int64_t> History::commitsOfPath(const OdString& path) {
    Statement query = database_->prepare(
        "SELECT number FROM changes WHERE path = ?1 UNION SELECT number FROM changes "
        "WHERE previous_path = ?1 AND previous_path <> '' ORDER BY number DESC");
    query.bind(path);
    std::vector<std::int64_t> numbers;
    while (query.step())
        numbers.push_back(CheckedRow(*database_, query).number(0));
    return numbers;
}

bool History::hasVersion(const OdString& path, const OdString& url) {
    // A text in older layouts.
    Statement query = database_->prepare("SELECT 1 FROM changes WHERE path = ? AND url IN (?, ?)");
    query.bind(path, url, packedUrl(url));
    return query.step();
}

CommitEntry History::add(const NewCommit& commit) {
    requireStorable(*database_, commit);
    const OdString hash = hashOf(commit);
    DatabaseTransaction transaction(*database_);
    if (std::optional<CommitEntry> present = this->commit(hash))
        return *present;
    const std::int64_t number = lastNumber() + 1;
    database_->prepare("INSERT INTO commits VALUES (?, ?, ?, ?, ?)")
        .run(number, hash, commit.author, commit.message, commit.timeSeconds);
    insertParents(*database_, number, commit);
    addLine(*database_, number);
    insertChanges(*database_, number, commit);
    addSizes(*database_, hash, commit.deltas);
    CommitEntry added = this->commit(hash).value();
    transaction.commit();
    return added;
}

}  // namespace qrv
