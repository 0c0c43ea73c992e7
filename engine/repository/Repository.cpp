#include <engine/base/Translation.h>
#include <engine/history/HistoryRecords.h>
#include <engine/paths/Layout.h>
#include <engine/repository/HistoryTraces.h>
#include <engine/repository/MetadataCheck.h>
#include <engine/repository/Repository.h>
#include <engine/repository/RepositoryLock.h>
#include <platform/kernel/OdError.h>

#include <exception>
#include <map>

namespace qrv {

namespace {

Database::Access accessFor(Repository::Use use) {
    return use == Repository::Use::change ? Database::Access::create : Database::Access::readOnly;
}

/// The lock as the use needs it; nothing for a look that does without.
Expected<std::optional<sys::Lock>> lockFor(Repository::Use use, const RepositoryPlace& place) {
    if (use == Repository::Use::look)
        return std::optional<sys::Lock>();
    if (use == Repository::Use::lookAndNote)
        return lockIfFree(place.folder);
    Expected<sys::Lock> lock = lockForChange(place.folder, place.root);
    if (!lock)
        return lock.error();
    return std::optional(std::move(*lock));
}

/// A look shows what there is, and tells that it is not all.
void tellOlderHistory(History& history, const sys::Folder& root, Caller& caller) try {
    const Expected<ReferenceRecord> record = checkedRecord(history, root);
    if (!record)
        caller.note(record.error().message);
} catch (const DatabaseError&) {
    // Told by what asks for a reference, and of no concern to the rest.
    return;
}

}  // namespace

Expected<std::unique_ptr<Repository>> Repository::open(const std::string& folder, Use use,
                                                       Caller& caller) {
    Expected<RepositoryPlace> place = openRepository(folder, caller);
    if (!place)
        return place.error();
    // Already for the lock, which a colleague is to take next.
    SharedMode shared(place->folder, caller);
    Expected<std::optional<sys::Lock>> lock = lockFor(use, *place);
    if (!lock)
        return lock.error();
    if (const Expected<void> isThere = checkHistoryIsThere(place->root, place->folder); !isThere)
        return isThere.error();
    History history = History::open(place->folder, place->root, accessFor(use));
    std::unique_ptr<Repository> repository(
        new Repository(std::move(*place), std::move(*lock), std::move(history), caller));
    // A look keeps nothing but what makes the next one quicker; what it writes elsewhere is the
    // person's own.
    if (use == Use::change)
        repository->shared_.emplace(std::move(shared));
    return repository;
}

Repository::Repository(RepositoryPlace place, std::optional<sys::Lock> lock, History history,
                       Caller& caller)
    : caller_(caller),
      lock_(std::move(lock)),
      root_(std::move(place.root)),
      folder_(std::move(place.folder)),
      history_(std::move(history)),
      storages_(std::make_unique<Storages>([this](const OdString& path) {
          const std::map<OdString, OdString>& renames = state().renames;
          const auto previous = renames.find(path);
          return history_.headUrl(previous == renames.end() ? path : previous->second);
      })) {
    storages_->use(root_, folder_);
}

Repository::~Repository() {
    try {
        updateRecord();
    } catch (const std::exception&) {
        // Whoever opens it for a change next finds the record behind the history.
        record_.reset();
    }
}

Expected<void> Repository::load() {
    if (Expected<void> read = readState(); !read)
        return read;
    // Only a change has it, and only a change is held to the record.
    if (shared_)
        return readRecord();
    tellOlderHistory(history_, folder_, caller_);
    return {};
}

Expected<void> Repository::readRecord() {
    Expected<ReferenceRecord> record = checkedRecord(history_, folder_);
    if (!record)
        return record.error();
    if (stateOf(*record, history_) == RecordState::same)
        firstUnrecorded_ = firstUnrecordedCommit(history_, folder_);
    record_ = std::move(*record);
    return {};
}

void Repository::updateRecord() {
    if (!record_)
        return;
    const Expected<void> updated =
        updateRecords(*record_, firstUnrecorded_, caller_.action(), history_, folder_);
    if (!updated)
        caller_.note(OdString::format(
            tr(L"Note: the next command that changes something records this once more: %ls"),
            updated.error().message));
}

bool Repository::isLockedByOther() const {
    return !lock_ && isLocked(folder_);
}

Expected<void> Repository::readState() const {
    // Before it is read: should somebody replace it meanwhile, its time is too early, and less of
    // the index is trusted.
    const sys::Outcome<sys::FileStamp> stamp = folder_.stamp(layout::statePath);
    stateStamp_ = stamp ? std::optional(*stamp) : std::nullopt;
    Expected<std::shared_ptr<common::Cache>> cache = openState(root_, folder_, host_);
    if (!cache)
        return cache.error();
    cache_ = *cache;
    return {};
}

common::Cache& Repository::cache() const {
    if (!cache_) {
        if (const Expected<void> read = readState(); !read)
            throw OdError(read.error().message);
    }
    return *cache_;
}

const common::State& Repository::state() const {
    return cache().read();
}

History& Repository::historyForNotes() {
    if (shared_)
        return history_;
    if (!historyForNotes_)
        historyForNotes_ = History::open(folder_, root_, Database::Access::readWrite);
    return *historyForNotes_;
}

OdString Repository::headCommit() {
    return history_.reference(branch(), common::RefType::Branch).value_or(OdString());
}

const Tree& Repository::headFiles() {
    if (!headFiles_)
        headFiles_ = history_.headFiles();
    return *headFiles_;
}

Expected<void> Repository::close() {
    // The cache writes when its last owner lets go.
    cache_.reset();
    if (!host_.lastWrite())
        return host_.lastWrite();
    // The library wrote it by its path.
    return checkMetadata(folder_, root_.path());
}

Expected<void> Repository::saveState() {
    const Expected<void> written = close();
    const Expected<void> read = readState();
    return written ? read : written;
}

}  // namespace qrv
