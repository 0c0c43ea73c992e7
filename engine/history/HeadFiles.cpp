#include <engine/history/HeadChangesInternal.h>
#include <engine/history/History.h>
#include <engine/history/RowsInternal.h>
#include <engine/history/SchemaInternal.h>
#include <engine/paths/PackedUrl.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

namespace qrv {

namespace {

/// The files that the condition selects; older layouts know no stamps.
Statement selectFiles(Database& database, const std::string& condition) {
    const char* const columns = database.schemaVersion() < layoutWithPackedUrls
                                    ? "SELECT path, url, size, NULL, NULL, NULL FROM head_files "
                                    : "SELECT path, url, size, number, modified, changed "
                                      "FROM head_files ";
    return database.prepare((columns + condition + " ORDER BY path").c_str());
}

HeadFile toHeadFile(const Database& database, const Statement& row) {
    const CheckedRow checked(database, row);
    HeadFile file = {checked.path(0), {checked.url(1), checked.sizeBytes(2)}, std::nullopt};
    if (!row.isNull(3) && !row.isNull(4) && !row.isNull(5))
        file.stamp = sys::FileStamp{.number = static_cast<std::uint64_t>(row.integer(3)),
                                    .sizeBytes = file.file.sizeBytes,
                                    .modifiedNs = row.integer(4),
                                    .changedNs = row.integer(5)};
    return file;
}

/// The three columns of a stamp. One of another size is of other contents.
struct StampColumns {
    StampColumns(const std::optional<sys::FileStamp>& stamp, std::int64_t sizeBytes) {
        if (!stamp || stamp->sizeBytes != sizeBytes)
            return;
        number = static_cast<std::int64_t>(stamp->number);
        modified = stamp->modifiedNs;
        changed = stamp->changedNs;
    }

    std::optional<std::int64_t> number;
    std::optional<std::int64_t> modified;
    std::optional<std::int64_t> changed;
};

void removeFiles(Database& database, const std::vector<FileDelta>& deltas) {
    Statement removal = database.prepare("DELETE FROM head_files WHERE path = ?");
    for (const FileDelta& delta : deltas) {
        if (delta.url.isEmpty())
            removal.run(delta.path.text());
        if (delta.previousPath)
            removal.run(delta.previousPath->text());
    }
}

void putFiles(Database& database, const std::vector<FileDelta>& deltas, const StampOf& stampOf) {
    Statement insertion =
        database.prepare("INSERT OR REPLACE INTO head_files VALUES (?, ?, ?, ?, ?, ?)");
    for (const FileDelta* delta : orderedByPath(deltas)) {
        if (delta->url.isEmpty())
            continue;
        const StampColumns stamp(stampOf ? stampOf(delta->path) : std::nullopt, delta->sizeBytes);
        insertion.run(delta->path.text(), packedUrl(delta->url), delta->sizeBytes, stamp.number,
                      stamp.modified, stamp.changed);
    }
}

std::vector<OdString> pathsOf(const std::vector<FileDelta>& deltas) {
    std::vector<OdString> paths;
    for (const FileDelta& delta : deltas) {
        paths.push_back(delta.path);
        if (delta.previousPath)
            paths.push_back(*delta.previousPath);
    }
    return paths;
}

}  // namespace

Tree History::headFiles() {
    Tree files;
    // They come in the order of the paths, or nearly so, and each goes to the end.
    visitHeadFiles([&files](HeadFile file) {
        files.insert_or_assign(files.end(), std::move(file.path), std::move(file.file));
    });
    return files;
}

void History::visitHeadFiles(const std::function<void(HeadFile)>& visit) {
    Statement query = selectFiles(*database_, "");
    while (query.step())
        visit(toHeadFile(*database_, query));
}

std::vector<SizedFile> History::headSizes() {
    Statement query = database_->prepare("SELECT path, size FROM head_files ORDER BY path");
    const CheckedRow row(*database_, query);
    std::vector<SizedFile> files;
    while (query.step())
        files.push_back({row.path(0).text(), row.sizeBytes(1)});
    // The order of the bytes is not always that of the texts.
    const auto isBefore = [](const SizedFile& one, const SizedFile& other) {
        return one.path < other.path;
    };
    if (!std::is_sorted(files.begin(), files.end(), isBefore))
        std::sort(files.begin(), files.end(), isBefore);
    return files;
}

std::vector<SizedFile> History::headSizesOf(const std::vector<OdString>& paths) {
    Statement query = database_->prepare("SELECT size FROM head_files WHERE path = ?");
    const CheckedRow row(*database_, query);
    std::vector<SizedFile> files;
    for (const OdString& path : paths) {
        query.bind(path);
        if (query.step())
            files.push_back({path, row.sizeBytes(0)});
    }
    return files;
}

bool History::isHeadFile(const OdString& path) {
    return !headSizesOf({path}).empty();
}

std::vector<OdString> History::headPathsBelow(const OdString& folder) {
    // "0" comes behind "/" in the order of the bytes.
    Statement query = database_->prepare("SELECT path FROM head_files WHERE path > ? AND path < ?");
    query.bind(folder + L'/', folder + L'0');
    const CheckedRow row(*database_, query);
    std::vector<OdString> paths;
    while (query.step())
        paths.push_back(row.path(0).text());
    return paths;
}

std::vector<OdString> History::headPathsOfSize(std::int64_t sizeBytes) {
    Statement query = database_->prepare("SELECT path FROM head_files WHERE size = ?");
    query.bind(sizeBytes);
    const CheckedRow row(*database_, query);
    std::vector<OdString> paths;
    while (query.step())
        paths.push_back(row.path(0).text());
    return paths;
}

std::optional<HeadFile> History::headFile(const OdString& path) {
    Statement query = selectFiles(*database_, "WHERE path = ?");
    query.bind(path);
    return query.step() ? std::optional(toHeadFile(*database_, query)) : std::nullopt;
}

OdString History::headUrl(const OdString& path) {
    const std::optional<HeadFile> file = headFile(path);
    return file ? file->file.contents : OdString();
}

void History::changeHeadFiles(const std::vector<FileDelta>& deltas, const StampOf& stampOf) {
    for (const FileDelta& delta : deltas)
        requireStorable(*database_, delta);
    DatabaseTransaction transaction(*database_);
    // First all that go: a new file may have the name that a renamed one had.
    removeFiles(*database_, deltas);
    putFiles(*database_, deltas, stampOf);
    addHeadChanges(*database_, pathsOf(deltas));
    transaction.commit();
}

void History::noteStamps(const std::vector<NotedStamp>& stamps) {
    DatabaseTransaction transaction(*database_);
    Statement change = database_->prepare(
        "UPDATE head_files SET number = ?2, modified = ?3, changed = ?4 "
        "WHERE path = ?1 AND (size = ?5 OR ?5 IS NULL)");
    std::vector<OdString> paths;
    for (const NotedStamp& noted : stamps) {
        const std::optional<std::int64_t> size =
            noted.stamp ? std::optional(noted.stamp->sizeBytes) : std::nullopt;
        const StampColumns columns(noted.stamp, size.value_or(0));
        change.run(noted.path, columns.number, columns.modified, columns.changed, size);
        paths.push_back(noted.path);
    }
    addHeadChanges(*database_, paths);
    transaction.commit();
}

FileQuestions questionsOfHead(History& history) {
    return {[&history](const OdString& path) { return history.isHeadFile(path); },
            [&history](const OdString& path) { return history.headPathsBelow(path); }};
}

}  // namespace qrv
