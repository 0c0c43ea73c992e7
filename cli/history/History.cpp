#include <cli/history/History.h>
#include <cli/history/SchemaInternal.h>

#include <filesystem>
#include <system_error>
#include <utility>

namespace qrv_cli {

namespace {

/// What one sees of a repository that has no history yet.
std::unique_ptr<Database> emptyHistory(const OdString& path) {
    std::unique_ptr<Database> database = Database::inMemory(path);
    makeHistory(*database);
    database->execute("PRAGMA query_only = ON");
    return database;
}

bool isThere(const OdString& path) {
    std::error_code error;
    return std::filesystem::symlink_status(path.toNarrow(), error).type() !=
           std::filesystem::file_type::not_found;
}

}  // namespace

History::History(std::unique_ptr<Database> database) : database_(std::move(database)) {
}

History History::open(const common::RootPath& root, Database::Access access) {
    const OdString path = root.dbPath();
    if (access == Database::Access::readOnly && !isThere(path))
        return History(emptyHistory(path));
    auto database = std::make_unique<Database>(path, access);
    if (!isEmptyHistory(*database))
        return History(std::move(database));
    if (access == Database::Access::readOnly)
        return History(emptyHistory(path));
    makeHistory(*database);
    return History(std::move(database));
}

OdString History::note(const OdString& name) {
    Statement query = database_->prepare("SELECT text FROM notes WHERE name = ?");
    query.bind(name);
    return query.step() ? query.text(0) : OdString();
}

void History::setNote(const OdString& name, const OdString& text) {
    if (text.isEmpty())
        database_->prepare("DELETE FROM notes WHERE name = ?").run(name);
    else
        database_->prepare("INSERT OR REPLACE INTO notes VALUES (?, ?)").run(name, text);
}

}  // namespace qrv_cli
