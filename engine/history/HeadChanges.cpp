#include <engine/history/HeadChangesInternal.h>
#include <engine/history/History.h>
#include <engine/history/RowsInternal.h>
#include <engine/history/SchemaInternal.h>

#include <cstdint>
#include <iterator>
#include <random>

namespace qrv {

namespace {

/// So many are always kept, and one for each `filesForChange` files: whoever has a copy that is
/// further behind reads all files anew.
constexpr std::int64_t fewestKept = 1000;
constexpr std::int64_t filesForChange = 4;

std::int64_t randomMark() {
    std::random_device device;
    const std::uint64_t high = device();
    return static_cast<std::int64_t>(high << 32U | device());
}

struct Kept {
    std::int64_t first = 0;
    std::int64_t last = 0;
};

Kept keptChanges(Database& database) {
    // Two statements, for of two ends in one SQLite looks for neither in the key.
    Statement first = database.prepare("SELECT min(sequence) FROM head_changes");
    Statement last = database.prepare("SELECT max(sequence) FROM head_changes");
    first.step();
    last.step();
    return {.first = first.integer(0), .last = last.integer(0)};
}

bool areAtLeast(Database& database, std::int64_t files) {
    Statement query = database.prepare("SELECT count(*) FROM (SELECT 1 FROM head_files LIMIT ?)");
    query.bind(files);
    query.step();
    return query.integer(0) >= files;
}

/// Whether so many changes at once are more than anybody follows: a first commit would only fill
/// the file with rows that go again.
bool isWorthANewCopy(Database& database, std::int64_t changes) {
    return changes > fewestKept && !areAtLeast(database, changes * filesForChange);
}

/// Asked each time that as many were added as are always kept, since counting files takes time.
void forgetSurplus(Database& database, std::int64_t lastBefore) {
    const Kept kept = keptChanges(database);
    if (kept.last / fewestKept == lastBefore / fewestKept)
        return;
    const std::int64_t surplus = kept.last - kept.first + 1 - fewestKept;
    if (surplus > 0 && !areAtLeast(database, surplus * filesForChange))
        database.prepare("DELETE FROM head_changes WHERE sequence <= ?")
            .run(kept.last - fewestKept);
}

}  // namespace

void beginHeadChanges(Database& database) {
    database.prepare("INSERT INTO head_changes VALUES (1, ?, '')").run(randomMark());
}

void addHeadChanges(Database& database, const std::vector<OdString>& paths) {
    if (paths.empty())
        return;
    const std::int64_t mark = randomMark();
    const std::int64_t lastBefore = keptChanges(database).last;
    if (isWorthANewCopy(database, std::ssize(paths))) {
        database.execute("DELETE FROM head_changes");
        database.prepare("INSERT INTO head_changes VALUES (?, ?, '')").run(lastBefore + 1, mark);
        return;
    }
    std::int64_t sequence = lastBefore;
    Statement insertion = database.prepare("INSERT INTO head_changes VALUES (?, ?, ?)");
    for (const OdString& path : paths)
        insertion.run(++sequence, mark, path);
    forgetSurplus(database, lastBefore);
}

std::optional<HeadChange> History::lastHeadChange() {
    if (database_->schemaVersion() < layoutWithPackedUrls)
        return std::nullopt;
    Statement query = database_->prepare(
        "SELECT sequence, mark FROM head_changes ORDER BY sequence DESC LIMIT 1");
    if (!query.step())
        return std::nullopt;
    return HeadChange{.sequence = query.integer(0), .mark = query.integer(1)};
}

std::optional<std::vector<RelativePath>> History::headChangesAfter(const HeadChange& change) {
    if (database_->schemaVersion() < layoutWithPackedUrls)
        return std::nullopt;
    Statement query = database_->prepare(
        "SELECT path, sequence, mark FROM head_changes WHERE sequence >= ? ORDER BY sequence");
    query.bind(change.sequence);
    if (!query.step() || query.integer(1) != change.sequence || query.integer(2) != change.mark)
        return std::nullopt;
    std::vector<RelativePath> paths;
    while (query.step())
        paths.push_back(CheckedRow(*database_, query).path(0));
    return paths;
}

void History::forgetHeadChanges(std::int64_t before) {
    database_
        ->prepare(
            "DELETE FROM head_changes WHERE sequence < "
            "min(?, (SELECT max(sequence) FROM head_changes))")
        .run(before);
}

}  // namespace qrv
