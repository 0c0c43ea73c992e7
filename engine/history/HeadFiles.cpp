#include <engine/history/History.h>
#include <engine/history/RowsInternal.h>

#include <algorithm>

namespace qrv {

Tree History::headFiles() {
    Statement query = database_->prepare("SELECT path, url, size FROM head_files ORDER BY path");
    const CheckedRow row(*database_, query);
    Tree files;
    // Rows come in the order of the paths, or nearly so, and each goes to the end.
    while (query.step())
        files.insert_or_assign(files.end(), row.path(0), TreeFile{row.url(1), row.sizeBytes(2)});
    return files;
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

OdString History::headUrl(const OdString& path) {
    Statement query = database_->prepare("SELECT url FROM head_files WHERE path = ?");
    query.bind(path);
    return query.step() ? CheckedRow(*database_, query).url(0) : OdString();
}

void History::changeHeadFiles(const std::vector<FileDelta>& deltas) {
    for (const FileDelta& delta : deltas)
        requireStorable(*database_, delta);
    DatabaseTransaction transaction(*database_);
    // First all that go: a new file may have the name that a renamed one had.
    Statement removal = database_->prepare("DELETE FROM head_files WHERE path = ?");
    for (const FileDelta& delta : deltas) {
        if (delta.url.isEmpty())
            removal.run(delta.path.text());
        if (delta.previousPath)
            removal.run(delta.previousPath->text());
    }
    Statement insertion = database_->prepare("INSERT OR REPLACE INTO head_files VALUES (?, ?, ?)");
    for (const FileDelta& delta : deltas) {
        if (!delta.url.isEmpty())
            insertion.run(delta.path.text(), delta.url, delta.sizeBytes);
    }
    transaction.commit();
}

FileQuestions questionsOfHead(History& history) {
    return {[&history](const OdString& path) { return history.isHeadFile(path); },
            [&history](const OdString& path) { return history.headPathsBelow(path); }};
}

}  // namespace qrv
