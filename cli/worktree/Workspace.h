#pragma once

#include <cli/Repository.h>
#include <cli/history/History.h>
#include <cli/storage/Storages.h>
#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <common/state/Cache.h>
#include <platform/sys/Folder.h>
#include <platform/sys/Lock.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace qrv_cli {

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
        look,    ///< never waits; what it can it refreshes
        change,  ///< holds the lock from here to its end
    };

    enum class Scan { later, ahead };

    /// Opens the repository that holds `folder`. For a change, waits some seconds for another
    /// process that holds the lock, and fails when it does not let go. What an interrupted command
    /// left is finished first, and told; without the lock, it is only told.
    ///
    /// With `Scan::ahead` a scan of the working tree begins meanwhile, for `findChanges`.
    static Expected<std::unique_ptr<Workspace>> open(const std::string& folder, Use use,
                                                     Scan scan = Scan::later);

    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;
    /// Writes a changed state like `close`, but has nobody to tell a failure.
    ~Workspace();

    const common::RootPath& root() const { return root_; }
    const sys::Folder& folder() const { return folder_; }
    common::Cache& cache() { return *cache_; }
    const common::State& state() const { return cache_->read(); }
    /// When the state file was written, in nanoseconds since 1970-01-01T00:00:00Z; nothing when it
    /// was not there.
    std::optional<std::int64_t> stateModifiedNs() const { return stateModifiedNs_; }
    History& history() { return history_; }
    Storages& storages() { return *storages_; }

    /// Whether this process holds the lock, so that it may write.
    bool mayChange() const { return lock_.has_value(); }
    OdString branch() const { return state().head.reference; }
    /// The hash of the branch's commit; empty before the first one.
    OdString headCommit();
    /// The files of HEAD; read once.
    const Tree& headFiles();
    /// Makes `headFiles` read them again.
    void forgetHeadFiles() { headFiles_.reset(); }

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
              History history);

    bool canScanAhead();
    Expected<void> openCache();

    // The lock is let go last, after the state was written.
    std::optional<sys::Lock> lock_;
    common::RootPath root_;
    sys::Folder folder_;
    Host host_;
    History history_;
    std::shared_ptr<common::Cache> cache_;
    std::optional<std::int64_t> stateModifiedNs_;
    std::unique_ptr<Storages> storages_;
    std::optional<Tree> headFiles_;
    std::unique_ptr<TreeScan> scan_;
};

/// The error of a system call: what could not be done, as a text with one "%ls" for `name` and one
/// for the cause.
ErrorMessage systemFailure(const OdString& text, const OdString& name, std::error_code cause);

}  // namespace qrv_cli
