#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <common/state/Cache.h>
#include <engine/base/Caller.h>
#include <engine/history/History.h>
#include <engine/history/ReferenceRecord.h>
#include <engine/repository/OpenState.h>
#include <engine/repository/SharedMode.h>
#include <engine/storage/Storages.h>
#include <engine/worktree/BaselineBytes.h>
#include <sys/Folder.h>
#include <sys/Lock.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace qrv {

class TreeScan;

/// All parts of one repository while a command works on it: the state, the history, the storages
/// and the working tree.
///
///     Expected<std::unique_ptr<Workspace>> workspace = Workspace::open(".",
///     Workspace::Use::change); if (!workspace)
///         return workspace.error();
///     ...
///     return (*workspace)->close();
///
/// Operations that reach the history may throw `DatabaseError`.
class Workspace {
public:
    enum class Use {
        look,    ///< never waits, and nobody waits for it
        change,  ///< holds the lock from here to its end
        repair,  ///< the same, but what was interrupted is left to the caller
    };

    enum class Scan { later, ahead };

    /// Opens the repository that holds `folder`. For a change, waits some seconds for another
    /// process that holds the lock, and fails when it does not let go. What an interrupted command
    /// left is settled first, and told; a look only tells it. Fails for a repository that has lost
    /// its history.
    ///
    /// With `Scan::ahead` a scan of the working tree begins meanwhile, for `findChanges`, and a
    /// look is content with a kept baseline instead of the whole state; it takes the lock, if that
    /// is free, to keep what it found.
    static Expected<std::unique_ptr<Workspace>> open(const std::string& folder, Use use,
                                                     Caller& caller, Scan scan = Scan::later);

    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;
    /// Records where references point now, and new commits; what cannot be recorded is told, and
    /// left to the next change. Writes a changed state like `close`, but has nobody to tell a
    /// failure.
    ~Workspace();

    Caller& caller() const { return caller_; }
    const common::RootPath& root() const { return root_; }
    const sys::Folder& folder() const { return folder_; }
    // The state is read when the workspace is opened, unless a kept baseline replaces most of it;
    // then when it is first asked for, and `OdError` is thrown when it cannot be.
    common::Cache& cache();
    const common::State& state() { return cache().read(); }
    /// The same, but its index may be missing.
    const common::State& stateWithoutIndex() const;
    /// What the working tree is to be compared with now.
    std::shared_ptr<const Baseline> baseline();
    /// Lets `close` keep the baseline, so that the next look takes less time. That needs the lock,
    /// files in HEAD, and a state without conflicts that is not written after this.
    void keepBaseline(std::shared_ptr<const Baseline> baseline);
    History& history() { return history_; }
    Storages& storages() { return *storages_; }

    /// Whether this process holds the lock, so that it may write.
    bool mayChange() const { return lock_.has_value(); }
    /// Whether another process holds it now.
    bool isLockedByOther() const;
    OdString branch() const { return stateWithoutIndex().head.reference; }
    /// The hash of the branch's commit; empty before the first one.
    OdString headCommit();
    /// The files of HEAD; read once.
    const Tree& headFiles();
    /// Makes `headFiles` read them again.
    void forgetHeadFiles() { headFiles_.reset(); }
    /// Tells `headFiles` what a change has made of them.
    void setHeadFiles(Tree files) { headFiles_ = std::move(files); }

    /// The scan that was begun when the workspace was opened, or a new one. It must end before the
    /// workspace.
    std::unique_ptr<TreeScan> takeScan();

    /// Writes the state, if it changed, and goes on with it. Fails when it cannot be written; the
    /// old file is untouched then.
    Expected<void> saveState();
    /// The same at the end of a command: afterwards there is no state here any more.
    Expected<void> close();

private:
    Workspace(common::RootPath root, sys::Folder folder, std::optional<sys::Lock> lock,
              History history, Caller& caller);

    bool canScanAhead();
    void takeKeptBaseline();
    Expected<void> openCache();
    void writeKeptBaseline();
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
    /// For a change.
    std::optional<ReferenceRecord> record_;
    /// Of the first commit that may not be recorded yet.
    std::int64_t firstUnrecorded_ = 1;
    std::shared_ptr<common::Cache> cache_;
    /// Of the state file when it was read; nothing when it was not there.
    std::optional<sys::FileStamp> stateVersion_;
    /// Instead of the cache, as long as there is none.
    std::optional<KeptBaseline> kept_;
    std::optional<KeptBaseline> toKeep_;
    std::unique_ptr<Storages> storages_;
    std::optional<Tree> headFiles_;
    std::unique_ptr<TreeScan> scan_;
};

}  // namespace qrv
