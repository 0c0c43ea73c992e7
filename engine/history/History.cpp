#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/history/History.h>
#include <engine/history/SchemaInternal.h>
#include <engine/history/SumsInternal.h>
#include <engine/history/UpgradeInternal.h>
#include <engine/paths/Layout.h>

#include <utility>

namespace qrv {

namespace {

/// What one sees of a repository that has no history yet.
std::unique_ptr<Database> emptyHistory(const OdString& path) {
    std::unique_ptr<Database> database = Database::inMemory(path);
    makeHistory(*database);
    database->execute("PRAGMA query_only = ON");
    return database;
}

/// What cannot be looked at is there.
bool isThere(const sys::Folder& folder) {
    const sys::Outcome<sys::FileStatus> status = folder.status(layout::historyPath);
    return status || !sys::meansAbsent(status.error());
}

}  // namespace

History::History(std::unique_ptr<Database> database) : database_(std::move(database)) {
}

History History::open(const common::RootPath& root, Database::Access access) {
    const sys::Outcome<sys::Folder> folder = sys::Folder::open(root.path().toNarrow());
    if (!folder)
        throw DatabaseError(OdString::format(tr(L"'%ls' cannot be opened: %ls"),
                                             printable(root.path()), causeOf(folder.error())));
    return open(*folder, root, access);
}

History History::open(const sys::Folder& folder, const common::RootPath& root,
                      Database::Access access) {
    const OdString path = root.dbPath();
    if (access == Database::Access::readOnly && !isThere(folder))
        return History(emptyHistory(path));
    auto database = std::make_unique<Database>(folder, layout::historyPath, path, access);
    if (!isEmptyHistory(*database)) {
        History history(std::move(database));
        if (access == Database::Access::create)
            upgrade(history);
        return history;
    }
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
    DatabaseTransaction transaction(*database_);
    if (text.isEmpty())
        database_->prepare("DELETE FROM notes WHERE name = ?").run(name);
    else
        database_->prepare("INSERT OR REPLACE INTO notes VALUES (?, ?)").run(name, text);
    renewSum(*database_);
    transaction.commit();
}

}  // namespace qrv
