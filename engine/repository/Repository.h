#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <common/state/Cache.h>
#include <engine/base/Caller.h>
#include <engine/history/History.h>
#include <engine/history/ReferenceRecord.h>
#include <engine/repository/FindRepository.h>
#include <engine/repository/OpenState.h>
#include <engine/repository/SharedMode.h>
#include <engine/storage/Storages.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>
#include <sys/Lock.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace qrv {

/// What is kept of one project while something is done with it: the lock, the state, the history
/// and the storages. It knows nothing of working files.
///
/// What reaches the history may throw `DatabaseError`.
class Repository {
public:
    enum class Use {
        look,         ///< never waits, and nobody waits for it
        lookAndNote,  ///< the same, but it takes the lock if that is free, to keep what it found
        change,       ///< holds the lock from here to its end
    };

    /// Opens the repository that holds `folder`, except for its state: see `load`. For a change,
    /// waits some seconds for another process that holds the lock, and fails when it does not let
    /// go. Fails for a repository that has lost its history.
    static Expected<std::unique_ptr<Repository>> open(const std::string& folder, Use use,
                                                      Caller& caller);

    Repository(const Repository&) = delete;
    Repository& operator=(const Repository&) = delete;
    /// Records where references point now, and new commits; what cannot be recorded is told, and
    /// left to the next change. Writes a changed state like `close`, but has nobody to tell a
    /// failure.
    ~Repository();

    /// Reads the state. Then compares the history with the records of what it was: fails when it is
    /// older than these, or tells so, when this only looks.
    Expected<void> load();

    Caller& caller() const { return caller_; }
    const common::RootPath& root() const { return root_; }
    const sys::Folder& folder() const { return folder_; }
    // Both throw `OdError` when the state could not be read again after it was written, and cannot
    // be now.
    common::Cache& cache() const;
    const common::State& state() const;
    /// Of the state file when it was read; nothing when it was not there.
    const std::optional<sys::FileStamp>& stateStamp() const { return stateStamp_; }
    History& history() { return history_; }
    /// The same, opened so that what was seen can be noted there, also by a look that holds the
    /// lock. An older layout stays as it is.
    History& historyForNotes();
    Storages& storages() { return *storages_; }

    /// Whether this process holds the lock, so that it may write.
    bool mayChange() const { return lock_.has_value(); }
    /// Whether another process holds it now.
    bool isLockedByOther() const;
    OdString branch() const { return state().head.reference; }
    /// The hash of the branch's commit; empty before the first one.
    OdString headCommit();
    /// The files of HEAD; read once.
    const Tree& headFiles();
    /// Makes `headFiles` read them again.
    void forgetHeadFiles() { headFiles_.reset(); }

    /// Writes the state, if it changed, and goes on with it. Fails when it cannot be written; the
    /// old file is untouched then.
    Expected<void> saveState();
    /// The same at the end: afterwards there is no state here any more.
    Expected<void> close();

private:
    Repository(RepositoryPlace place, std::optional<sys::Lock> lock, History history,
               Caller& caller);

    Expected<void> readState() const;
    Expected<void> readRecord();
    void updateRecord();

    Caller& caller_;
    /// While this may change anything.
    std::optional<SharedMode> shared_;
    // The lock is let go last, after the state was written.
    std::optional<sys::Lock> lock_;
    common::RootPath root_;
    sys::Folder folder_;
    Host host_;
    History history_;
    /// In place of one that is only read.
    std::optional<History> historyForNotes_;
    /// For a change.
    std::optional<ReferenceRecord> record_;
    /// Of the first commit that may not be recorded yet.
    std::int64_t firstUnrecorded_ = 1;
    /// Null until it is read again.
    mutable std::shared_ptr<common::Cache> cache_;
    mutable std::optional<sys::FileStamp> stateStamp_;
    std::unique_ptr<Storages> storages_;
    std::optional<Tree> headFiles_;
};

}  // namespace qrv
