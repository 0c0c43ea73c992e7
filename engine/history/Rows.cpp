#include <engine/base/Digest.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/history/RowsInternal.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/paths/PackedUrl.h>
#include <engine/paths/RelativePath.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace qrv {

void failDamaged(const Database& database, const OdString& cause) {
    throw DatabaseError(OdString::format(tr(L"The history '%ls' is damaged: %ls"),
                                         printable(database.path()), cause));
}

void failToKeep(const Database& database, const OdString& cause) {
    throw DatabaseError(OdString::format(tr(L"The history '%ls' cannot keep this: %ls"),
                                         printable(database.path()), cause));
}

void failBuildsOn(const Database& database, std::int64_t number, std::int64_t parent) {
    failDamaged(database,
                OdString::format(tr(L"commit %i cannot build on commit %i"), number, parent));
}

RelativePath CheckedRow::path(int column) const {
    Expected<RelativePath> path = RelativePath::checkBytes(row_.bytes(column));
    if (!path)
        failDamaged(database_, path.error().message);
    return std::move(*path);
}

OdString CheckedRow::url(int column) const {
    const std::string_view bytes = row_.bytes(column);
    std::optional<OdString> url =
        row_.isBlob(column) ? unpackedUrl(bytes) : OdString::fromNarrow(bytes);
    if (!url || !isCheckedUrl(*url))
        failDamaged(database_, OdString::format(tr(L"'%ls' does not name a stored version"),
                                                printable(OdString::fromNarrow(bytes))));
    return std::move(*url);
}

OdString CheckedRow::hash(int column) const {
    OdString hash = row_.text(column);
    if (!isDigest(hash))
        failDamaged(database_, OdString::format(tr(L"'%ls' is no hash"), printable(hash)));
    return hash;
}

std::int64_t CheckedRow::number(int column) const {
    // So that the next number is one, too.
    constexpr std::int64_t highest = 1'000'000'000'000;
    const std::int64_t number = row_.integer(column);
    if (number < 1 || number > highest)
        failDamaged(database_, OdString::format(tr(L"%i is no number of a commit"), number));
    return number;
}

std::int64_t CheckedRow::sizeBytes(int column) const {
    const std::int64_t size = row_.integer(column);
    if (size < 0)
        failDamaged(database_, OdString::format(tr(L"%i is no size of a file"), size));
    return size;
}

std::int64_t CheckedRow::timeSeconds(int column) const {
    const std::int64_t time = row_.integer(column);
    if (!isTimeInRange(time))
        failDamaged(database_, OdString::format(tr(L"%i is no time of a commit"), time));
    return time;
}

std::optional<RelativePath> CheckedRow::pathIfAny(int column) const {
    return isEmpty(column) ? std::nullopt : std::optional(path(column));
}

OdString CheckedRow::urlOrEmpty(int column) const {
    return isEmpty(column) ? OdString() : url(column);
}

CommitEntry entryWithoutParents(const CheckedRow& row) {
    CommitEntry entry;
    entry.number = row.number(0);
    entry.hash = row.hash(1);
    entry.author = row.text(2);
    entry.message = row.text(3);
    entry.timeSeconds = row.timeSeconds(4);
    return entry;
}

FileDelta toDelta(const CheckedRow& row) {
    return {row.path(0), row.urlOrEmpty(1), row.pathIfAny(2), row.sizeBytes(3)};
}

void requireStorable(const Database& database, const FileDelta& delta) {
    if (!delta.url.isEmpty()) {
        const Expected<CheckedUrl> url = CheckedUrl::check(delta.url);
        if (!url)
            failToKeep(database, url.error().message);
    }
    if (delta.sizeBytes < 0)
        failToKeep(database, OdString::format(tr(L"%i is no size of a file"), delta.sizeBytes));
}

bool isTimeInRange(std::int64_t timeSeconds) {
    constexpr std::int64_t beginOfYear1 = -62135596800;
    constexpr std::int64_t beginOfYear10000 = 253402300800;
    return timeSeconds >= beginOfYear1 && timeSeconds < beginOfYear10000;
}

std::int64_t numberOf(Database& database, const OdString& hash) {
    Statement query = database.prepare("SELECT number FROM commits WHERE hash = ?");
    query.bind(hash);
    if (query.step())
        return CheckedRow(database, query).number(0);
    throw DatabaseError(OdString::format(tr(L"The history '%ls' has no commit '%ls'"),
                                         printable(database.path()), printable(hash)));
}

}  // namespace qrv
