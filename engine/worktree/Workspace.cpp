#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/history/HistoryRecords.h>
#include <engine/history/Plan.h>
#include <engine/paths/Layout.h>
#include <engine/repository/FindRepository.h>
#include <engine/repository/HistoryTraces.h>
#include <engine/repository/MetadataCheck.h>
#include <engine/repository/RepositoryLock.h>
#include <engine/worktree/Interruption.h>
#include <engine/worktree/KeptBaseline.h>
#include <engine/worktree/TreeScan.h>
#include <engine/worktree/Workspace.h>
#include <platform/kernel/OdError.h>

#include <cstdint>
#include <exception>
#include <map>
#include <utility>

namespace qrv {

namespace {

constexpr const char* statePath = layout::statePath;

/// Whether the clock of the file system had gone on between the two, so that no version of the
/// older file that comes after the younger one can have the times of this one.
bool isLater(const sys::FileStamp& younger, const sys::FileStamp& older) {
    return younger.modifiedNs > older.modifiedNs && younger.changedNs > older.changedNs;
}

Database::Access accessFor(Workspace::Use use) {
    return use == Workspace::Use::look ? Database::Access::readOnly : Database::Access::create;
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

Expected<void> settle(Workspace& workspace, Workspace::Use use) {
    if (use == Workspace::Use::change)
        return settleInterruption(workspace);
    if (use == Workspace::Use::look)
        tellInterruption(workspace);
    return {};
}

}  // namespace

Expected<std::unique_ptr<Workspace>> Workspace::open(const std::string& folder, Use use,
                                                     Caller& caller, Scan scan) {
    Expected<RepositoryPlace> repository = openRepository(folder, caller);
    if (!repository)
        return repository.error();
    const common::RootPath& root = repository->root;
    // Already for the lock, which a colleague is to take next.
    SharedMode shared(repository->folder, caller);
    std::optional<sys::Lock> held;
    if (use != Use::look) {
        Expected<sys::Lock> lock = lockForChange(repository->folder, root);
        if (!lock)
            return lock.error();
        held = std::move(*lock);
    } else if (scan == Scan::ahead) {
        held = lockIfFree(repository->folder);
    }
    if (const Expected<void> isThere = checkHistoryIsThere(root, repository->folder); !isThere)
        return isThere.error();

    History history = History::open(repository->folder, root, accessFor(use));
    std::unique_ptr<Workspace> workspace(new Workspace(
        root, std::move(repository->folder), std::move(held), std::move(history), caller));
    // A look keeps nothing but a baseline; what it writes elsewhere is the person's own.
    if (use != Use::look)
        workspace->shared_.emplace(std::move(shared));
    if (scan == Scan::ahead && workspace->canScanAhead())
        workspace->scan_ = std::make_unique<TreeScan>(workspace->root_, workspace->folder_);
    if (workspace->scan_ && use == Use::look)
        workspace->takeKeptBaseline();
    if (!workspace->kept_) {
        if (const Expected<void> opened = workspace->openCache(); !opened)
            return opened.error();
    }
    if (use == Use::look)
        tellOlderHistory(workspace->history_, workspace->folder_, caller);
    else if (const Expected<void> read = workspace->readRecord(); !read)
        return read.error();
    if (const Expected<void> settled = settle(*workspace, use); !settled)
        return settled.error();
    return workspace;
}

Workspace::Workspace(common::RootPath root, sys::Folder folder, std::optional<sys::Lock> lock,
                     History history, Caller& caller)
    : caller_(caller),
      lock_(std::move(lock)),
      root_(std::move(root)),
      folder_(std::move(folder)),
      history_(std::move(history)),
      storages_(std::make_unique<Storages>([this](const OdString& path) {
          const std::map<OdString, OdString>& renames = stateWithoutIndex().renames;
          const auto previous = renames.find(path);
          const Tree& files = headFiles();
          const auto file = files.find(previous == renames.end() ? path : previous->second);
          return file == files.end() ? OdString() : file->second.url;
      })) {
    storages_->use(root_, folder_);
}

Workspace::~Workspace() {
    try {
        updateRecord();
    } catch (const std::exception&) {
        // Whoever opens it for a change next finds the record behind the history.
        record_.reset();
    }
}

Expected<void> Workspace::readRecord() {
    Expected<ReferenceRecord> record = checkedRecord(history_, folder_);
    if (!record)
        return record.error();
    if (stateOf(*record, history_) == RecordState::same)
        firstUnrecorded_ = firstUnrecordedCommit(history_, folder_);
    record_ = std::move(*record);
    return {};
}

void Workspace::updateRecord() {
    if (!record_)
        return;
    const Expected<void> updated =
        updateRecords(*record_, firstUnrecorded_, caller_.action(), history_, folder_);
    if (!updated)
        caller_.note(OdString::format(
            tr(L"Note: the next command that changes something records this once more: %ls"),
            updated.error().message));
}

bool Workspace::isLockedByOther() const {
    return !lock_ && isLocked(folder_);
}

bool Workspace::canScanAhead() {
    // A scan makes the ignore file when there is none, and a command that fails is to make nothing.
    // What was interrupted changes files before they are looked at.
    return folder_.status(layout::ignoreRulesPath) && !notedPlan(history_);
}

/// One that cannot be read is no loss.
void Workspace::takeKeptBaseline() {
    const sys::Outcome<sys::FileStamp> stateFile = folder_.stamp(statePath);
    const sys::Outcome<sys::FileStamp> keptFile = folder_.stamp(layout::baselinePath);
    if (!stateFile || !keptFile || !isLater(*keptFile, *stateFile))
        return;
    Expected<std::optional<KeptBaseline>> kept = readBaseline(folder_);
    if (kept && *kept && (*kept)->stateFile == *stateFile &&
        (*kept)->headCommit == history_.note(headNote))
        kept_ = std::move(*kept);
}

Expected<void> Workspace::openCache() {
    // Before it is read: should somebody replace it meanwhile, its time is too early, and less of
    // the index is trusted.
    const sys::Outcome<sys::FileStamp> version = folder_.stamp(statePath);
    stateVersion_ = version ? std::optional(*version) : std::nullopt;
    Expected<std::shared_ptr<common::Cache>> cache = openState(root_, folder_, host_);
    if (!cache)
        return cache.error();
    cache_ = *cache;
    kept_.reset();
    return {};
}

common::Cache& Workspace::cache() {
    if (!cache_) {
        if (const Expected<void> opened = openCache(); !opened)
            throw OdError(opened.error().message);
    }
    return *cache_;
}

const common::State& Workspace::stateWithoutIndex() const {
    return kept_ ? kept_->state : cache_->read();
}

std::shared_ptr<const Baseline> Workspace::baseline() {
    if (kept_)
        return kept_->baseline;
    const std::optional<std::int64_t> modifiedNs =
        stateVersion_ ? std::optional(stateVersion_->modifiedNs) : std::nullopt;
    return std::make_shared<const Baseline>(
        Baseline::of(history_.headSizes(), state().index, modifiedNs));
}

void Workspace::keepBaseline(std::shared_ptr<const Baseline> baseline) {
    if (!mayChange() || kept_ || !stateVersion_ || baseline->files().empty())
        return;
    // Conflicts do not last, and have too many parts to be kept twice.
    if (!state().conflicts.empty())
        return;
    toKeep_ = toKept(state(), *stateVersion_, history_.note(headNote), std::move(baseline));
}

OdString Workspace::headCommit() {
    return history_.reference(branch(), common::RefType::Branch).value_or(OdString());
}

const Tree& Workspace::headFiles() {
    if (!headFiles_)
        headFiles_ = history_.headFiles();
    return *headFiles_;
}

std::unique_ptr<TreeScan> Workspace::takeScan() {
    return scan_ ? std::move(scan_) : std::make_unique<TreeScan>(root_, folder_);
}

Expected<void> Workspace::close() {
    // The cache writes when its last owner lets go.
    cache_.reset();
    if (!host_.lastWrite())
        return host_.lastWrite();
    // The library wrote it by its path.
    if (Expected<void> checked = checkMetadata(folder_, root_.path()); !checked)
        return checked;
    writeKeptBaseline();
    return {};
}

/// Without it the next look takes longer, and tries again: nobody need know.
void Workspace::writeKeptBaseline() {
    if (!toKeep_)
        return;
    const SharedMode shared(folder_, caller_);
    const sys::Outcome<sys::FileStamp> version = folder_.stamp(statePath);
    if (version && *version == toKeep_->stateFile)
        static_cast<void>(writeBaseline(*toKeep_, folder_));
    toKeep_.reset();
}

Expected<void> Workspace::saveState() {
    const Expected<void> written = close();
    const Expected<void> opened = openCache();
    return written ? opened : written;
}

}  // namespace qrv
