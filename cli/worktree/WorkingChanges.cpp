#include <cli/Message.h>
#include <cli/safety/StorageUrlCheck.h>
#include <cli/worktree/TreeScan.h>
#include <cli/worktree/WorkingChanges.h>
#include <cli/worktree/WorkingFile.h>
#include <common/state/Index.h>
#include <common/state/Transaction.h>
#include <common/storage/StorageUrl.h>
#include <common/worktree/FileIdentity.h>

#include <algorithm>
#include <cstddef>
#include <deque>
#include <memory>
#include <memory_resource>
#include <string_view>
#include <unordered_map>
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

/// The files of HEAD, whose order the result has, against what lies in the tree in any order.
class Comparison {
public:
    /// The scan must have its paths.
    Comparison(Workspace& workspace, std::vector<SizedFile> head, TreeScan& scan)
        : workspace_(workspace),
          index_(workspace.state().index),
          head_(std::move(head)),
          scan_(scan),
          present_(head_.size(), nullptr) {
        if (const std::optional<std::int64_t> written = workspace.stateModifiedNs())
            trustedBeforeTicks_ = toTicks(*written) - coarsestTimeStepTicks;
    }

    WorkingChanges compare() {
        const std::vector<std::size_t> others = matchWithHead();
        scan_.finish();
        sortOut(others);
        addHiddenFiles();
        classify();
        findRenames();
        std::sort(result_.links.begin(), result_.links.end());
        return std::move(result_);
    }

    const std::vector<Verdict>& verdicts() const { return verdicts_; }

private:
    /// Gives the places of the other paths. By a table: sorting the paths would take several times
    /// as long.
    std::vector<std::size_t> matchWithHead() {
        std::pmr::monotonic_buffer_resource memory;
        std::pmr::unordered_map<std::wstring_view, std::size_t> places(&memory);
        places.reserve(head_.size());
        for (std::size_t place = 0; place < head_.size(); ++place)
            places.emplace(head_[place].path.toWide(), place);
        std::vector<std::size_t> others;
        for (std::size_t place = 0; place < scan_.paths().size(); ++place) {
            const auto found = places.find(scan_.paths()[place].toWide());
            if (found == places.end())
                others.push_back(place);
            else
                present_[found->second] = &scan_.statuses()[place];
        }
        return others;
    }

    /// What is new, and links. One that took the place of a file of HEAD is met by its path there.
    void sortOut(const std::vector<std::size_t>& others) {
        for (const std::size_t place : others) {
            const sys::FileStatus& status = scan_.statuses()[place];
            if (status.kind == sys::FileKind::regular)
                newFiles_.push_back({scan_.paths()[place], status.sizeBytes});
            else if (status.kind == sys::FileKind::link)
                result_.links.push_back(scan_.paths()[place]);
        }
        std::sort(newFiles_.begin(), newFiles_.end(),
                  [](const auto& one, const auto& other) { return one.path < other.path; });
    }

    /// A file of HEAD stays versioned when a rule ignores it later.
    void addHiddenFiles() {
        for (std::size_t place = 0; place < head_.size(); ++place) {
            const OdString& path = head_[place].path;
            if (present_[place] == nullptr) {
                // Not listed: its folder may have become a link.
                if (const auto status = workspace_.folder().status(path.toNarrow()))
                    present_[place] = &hidden_.emplace_back(*status);
            }
            if (present_[place] == nullptr || present_[place]->kind == sys::FileKind::regular)
                continue;
            if (present_[place]->kind == sys::FileKind::link)
                result_.links.push_back(path);
            present_[place] = nullptr;
        }
    }

    void classify() {
        result_.present.reserve(head_.size() + newFiles_.size());
        auto next = newFiles_.begin();
        for (std::size_t place = 0; place < head_.size(); ++place) {
            SizedFile& head = head_[place];
            for (; next != newFiles_.end() && next->path < head.path; ++next)
                addNew(*next);
            if (present_[place] == nullptr)
                addRemoved(head);
            else
                addOld(*present_[place], head);
        }
        for (; next != newFiles_.end(); ++next)
            addNew(*next);
    }

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
        removedBySize_.emplace(file.sizeBytes, file.path);
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

    void findRenames() {
        for (const SizedFile& file : newFiles_) {
            if (removedBySize_.empty())
                return;
            // All empty files are equal, which says nothing about where one came from.
            if (file.sizeBytes != 0)
                findPrevious(file);
        }
    }

    void findPrevious(const SizedFile& file) {
        const auto [begin, end] = removedBySize_.equal_range(file.sizeBytes);
        if (begin == end)
            return;
        const Expected<OdString> digest = digestOfFile(workspace_.folder(), file.path);
        const auto isSame = [this, &digest](const auto& removed) {
            const Expected<CheckedUrl> url =
                CheckedUrl::check(workspace_.history().headUrl(removed.second));
            return digest && url && *digest == url->digest();
        };
        const auto found = std::find_if(begin, end, isSame);
        if (found == end)
            return;
        result_.renames.emplace(file.path, found->second);
        removedBySize_.erase(found);
    }

    Workspace& workspace_;
    const std::map<OdString, common::IndexData>& index_;
    std::map<OdString, common::IndexData>::const_iterator nextEntry_ = index_.begin();
    // Nothing is trusted without a state file.
    std::int64_t trustedBeforeTicks_ = 0;
    std::vector<SizedFile> head_;
    TreeScan& scan_;
    /// For each file of HEAD what it is now, in `scan_` or `hidden_`; null when it is gone.
    std::vector<const sys::FileStatus*> present_;
    /// Of files of HEAD that the scan left out.
    std::deque<sys::FileStatus> hidden_;
    /// Ordered by path.
    std::vector<SizedFile> newFiles_;
    std::vector<Verdict> verdicts_;
    /// Of which no renaming has been found.
    std::multimap<std::int64_t, OdString> removedBySize_;
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
    Comparison comparison(workspace, std::move(head), *scan);
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
