#include <cli/Message.h>
#include <cli/safety/StorageUrlCheck.h>
#include <cli/worktree/MatchedTree.h>
#include <cli/worktree/Renames.h>
#include <cli/worktree/TreeScan.h>
#include <cli/worktree/WorkingChanges.h>
#include <cli/worktree/WorkingFile.h>
#include <common/state/Index.h>
#include <common/state/Transaction.h>
#include <common/storage/StorageUrl.h>
#include <common/worktree/FileIdentity.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <utility>

namespace qrv_cli {

namespace {

using common::FileChange;

/// The coarsest step in which a file system counts its times.
constexpr std::int64_t coarsestTimeStepTicks = 20'000'000;

/// What reading a file told, for the index.
struct Verdict {
    OdString path;
    std::int64_t ticks = 0;
    bool isModified = false;
};

/// Tells what each file is, in the order of the paths.
class Comparison {
public:
    Comparison(Workspace& workspace, MatchedTree tree)
        : workspace_(workspace), index_(workspace.state().index), tree_(std::move(tree)) {
        if (const std::optional<std::int64_t> written = workspace.stateModifiedNs())
            trustedBeforeTicks_ = toTicks(*written) - coarsestTimeStepTicks;
    }

    WorkingChanges compare() {
        const std::vector<SizedFile>& newFiles = tree_.newFiles();
        result_.present.reserve(tree_.head().size() + newFiles.size());
        auto next = newFiles.begin();
        for (std::size_t place = 0; place < tree_.head().size(); ++place) {
            SizedFile& head = tree_.head()[place];
            for (; next != newFiles.end() && next->path < head.path; ++next)
                addNew(*next);
            if (tree_.present()[place] == nullptr)
                addRemoved(head);
            else
                addOld(*tree_.present()[place], head);
        }
        for (; next != newFiles.end(); ++next)
            addNew(*next);
        result_.renames = findRenames(workspace_, newFiles, removed_);
        result_.links = tree_.takeLinks();
        return std::move(result_);
    }

    const std::vector<Verdict>& verdicts() const { return verdicts_; }

private:
    void addNew(const SizedFile& file) {
        result_.present.push_back(file.path);
        add(file.path, FileChange::added, result_.files.added);
    }

    /// The path is not needed afterwards.
    void addOld(const sys::FileStatus& status, SizedFile& head) {
        if (isModified(status, head))
            add(head.path, FileChange::modified, result_.files.modified);
        result_.present.push_back(std::move(head.path));
    }

    void addRemoved(const SizedFile& file) {
        removed_.push_back(file);
        add(file.path, FileChange::removed, result_.files.removed);
    }

    void add(const OdString& path, FileChange change, std::vector<common::File>& files) {
        files.emplace_back(path);
        common::StatusRef& status = result_.files.changes.emplace_back(path, change);
        for (const common::ConflictData& conflict : workspace_.state().conflicts) {
            if (conflict.path == path)
                status.conflictInfo() = std::make_shared<common::ConflictData>(conflict);
        }
    }

    bool isModified(const sys::FileStatus& status, const SizedFile& head) {
        if (status.sizeBytes != head.sizeBytes)
            return true;
        const std::int64_t ticks = toTicks(status.modifiedNs);
        // "Modified" is not believed: a commit that was interrupted before it wrote the state may
        // have made it untrue.
        const common::IndexData* const noted = indexEntry(head.path);
        const bool isNoted = noted != nullptr && noted->lastChecked == ticks && !noted->modified;
        if (isNoted && ticks < trustedBeforeTicks_)
            return false;
        const bool differs = differsFrom(head.path, workspace_.history().headUrl(head.path));
        verdicts_.push_back({head.path, ticks, differs});
        return differs;
    }

    /// Asked for in the order of the index, so that a step or two lead from one to the next.
    const common::IndexData* indexEntry(const OdString& path) {
        for (; nextEntry_ != index_.end(); ++nextEntry_) {
            if (nextEntry_->first == path)
                return &nextEntry_->second;
            if (path < nextEntry_->first)
                return nullptr;
        }
        return nullptr;
    }

    bool differsFrom(const OdString& path, const OdString& url) const {
        if (common::urlToType(url) == common::FileStorage::Plain)
            return common::isDifferent(path, url, workspace_.root());
        const Expected<CheckedUrl> drawing = CheckedUrl::check(url);
        const Expected<OdString> digest = digestOfFile(workspace_.folder(), path);
        // What cannot be read is not known to be the same.
        return !drawing || !digest || *digest != drawing->digest();
    }

    Workspace& workspace_;
    const std::map<OdString, common::IndexData>& index_;
    std::map<OdString, common::IndexData>::const_iterator nextEntry_ = index_.begin();
    // Nothing is trusted without a state file.
    std::int64_t trustedBeforeTicks_ = 0;
    MatchedTree tree_;
    std::vector<SizedFile> removed_;
    std::vector<Verdict> verdicts_;
    WorkingChanges result_;
};

void refreshIndex(Workspace& workspace, const std::vector<Verdict>& verdicts) {
    if (!workspace.mayChange() || verdicts.empty())
        return;
    common::Cache& cache = workspace.cache();
    common::Transaction transaction = cache.getTransaction();
    for (const Verdict& verdict : verdicts) {
        common::updateIndex(verdict.path, cache, workspace.root(), verdict.isModified);
        // The library notes the time that the file has now; the verdict is about the one it had.
        if (cache.read().index.at(verdict.path).lastChecked != verdict.ticks)
            common::removeIndex(verdict.path, cache);
    }
    transaction.commit();
}

bool holds(const std::vector<common::File>& files, const OdString& path) {
    const auto isBefore = [](const common::File& file, const OdString& sought) {
        return file.path < sought;
    };
    const auto found = std::lower_bound(files.begin(), files.end(), path, isBefore);
    return found != files.end() && found->path == path;
}

}  // namespace

Expected<WorkingChanges> findChanges(Workspace& workspace) {
    const std::unique_ptr<TreeScan> scan = workspace.takeScan();
    // Meanwhile, as neither needs the other.
    std::vector<SizedFile> head = workspace.history().headSizes();
    if (Expected<void> listed = scan->waitForPaths(); !listed)
        return std::move(listed).error();
    for (const OdString& message : scan->messages())
        printMessage(message);
    Comparison comparison(workspace, MatchedTree(std::move(head), *scan, workspace.folder()));
    WorkingChanges changes = comparison.compare();
    refreshIndex(workspace, comparison.verdicts());
    return changes;
}

std::vector<common::UnchangedFile> unchangedFiles(const WorkingChanges& changes,
                                                  Workspace& workspace) {
    std::vector<common::UnchangedFile> files;
    for (const auto& [path, file] : workspace.headFiles()) {
        if (changeOf(path, changes) == FileChange::unchanged)
            files.push_back({path, file.url});
    }
    return files;
}

FileChange changeOf(const OdString& path, const WorkingChanges& changes) {
    if (holds(changes.files.modified, path))
        return FileChange::modified;
    if (holds(changes.files.added, path))
        return FileChange::added;
    if (holds(changes.files.removed, path))
        return FileChange::removed;
    return FileChange::unchanged;
}

}  // namespace qrv_cli
