#include <engine/base/SortedLookup.h>
#include <engine/base/Translation.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/tree/Renames.h>
#include <engine/worktree/FileDigest.h>
#include <engine/worktree/NamedFiles.h>
#include <engine/worktree/TreeScan.h>
#include <engine/worktree/WorkingChanges.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

namespace qrv {

namespace {

using common::FileChange;

/// What a look at the working tree saw, in order.
struct Seen {
    const std::vector<TreeScan::Known>& candidates;
    const std::vector<TreeScan::Other>& others;
    const std::vector<Unseen>& unseen;
    /// Whether that is the whole tree, so that a file which is nowhere may have another name now.
    bool isWhole = true;
};

OdString textOf(const KnownFile& file) {
    return OdString::fromNarrow(file.path);
}

/// Tells what each file is.
class Comparison {
public:
    Comparison(WorkingTree& workingTree, const Seen& seen)
        : workingTree_(workingTree), seen_(seen) {}

    WorkingChanges compare(std::shared_ptr<const Baseline> baseline) {
        const std::vector<KnownFile>& known = baseline->files();
        for (const TreeScan::Known& candidates : seen_.candidates)
            addKnown(known[candidates.place], candidates.status);
        for (const TreeScan::Other& other : seen_.others)
            addOther(other);
        // Both were found in the order of the paths.
        std::inplace_merge(
            changes_.begin(), changes_.begin() + static_cast<std::ptrdiff_t>(knownChanges_),
            changes_.end(),
            [](const auto& one, const auto& other) { return one.path < other.path; });
        for (const common::StagedFile& change : changes_)
            add(change.path, change.change);
        std::sort(result_.links.begin(), result_.links.end());
        if (seen_.isWhole)
            result_.renames = renames();
        result_.unseen.insert(result_.unseen.end(), seen_.unseen.begin(), seen_.unseen.end());
        result_.unseen = sortedUnseen(std::move(result_.unseen));
        result_.baseline = std::move(baseline);
        return std::move(result_);
    }

    /// Of files that were read and are as in HEAD.
    std::vector<NotedStamp> takeSeen() { return std::move(stamps_); }

private:
    /// A file that has to be read may turn out to be as in HEAD.
    void addKnown(const KnownFile& file, const sys::FileStatus& status) {
        if (status.kind == sys::FileKind::regular && !isModified(file, status))
            return;
        ++knownChanges_;
        if (status.kind == sys::FileKind::regular) {
            changes_.emplace_back(textOf(file), FileChange::modified);
            return;
        }
        if (status.kind == sys::FileKind::link)
            result_.links.push_back(textOf(file));
        removed_.push_back({textOf(file), file.sizeBytes});
        changes_.emplace_back(textOf(file), FileChange::removed);
    }

    void addOther(const TreeScan::Other& other) {
        if (other.status.kind == sys::FileKind::link)
            result_.links.push_back(other.path);
        if (other.status.kind != sys::FileKind::regular)
            return;
        newFiles_.push_back({other.path, other.status.sizeBytes});
        changes_.emplace_back(other.path, FileChange::added);
    }

    void add(const OdString& path, FileChange change) {
        listOf(change).emplace_back(path);
        common::StatusRef& status = result_.files.changes.emplace_back(path, change);
        for (const common::ConflictData& conflict : workingTree_.repository().state().conflicts) {
            if (conflict.path == path)
                status.conflictInfo() = std::make_shared<common::ConflictData>(conflict);
        }
    }

    std::vector<common::File>& listOf(FileChange change) {
        if (change == FileChange::added)
            return result_.files.added;
        return change == FileChange::modified ? result_.files.modified : result_.files.removed;
    }

    /// One that cannot be read is not known to be, which is noted.
    bool isModified(const KnownFile& file, const sys::FileStatus& status) {
        if (status.sizeBytes != file.sizeBytes)
            return true;
        const OdString path = textOf(file);
        const sys::Outcome<OdString> digest = tryDigestOfFile(workingTree_.folder(), path);
        if (!digest) {
            result_.unseen.push_back({path, digest.error()});
            return false;
        }
        const Expected<CheckedUrl> url =
            CheckedUrl::check(workingTree_.repository().history().headUrl(path));
        const bool differs = !url || *digest != url->digest();
        if (!differs)
            noteSeen(path, status);
        return differs;
    }

    /// Unless somebody has changed it meanwhile.
    void noteSeen(const OdString& path, const sys::FileStatus& before) {
        const sys::Outcome<sys::FileStamp> now = workingTree_.folder().stamp(path.toNarrow());
        if (now && now->number == before.number && now->sizeBytes == before.sizeBytes &&
            now->modifiedNs == before.modifiedNs && now->changedNs == before.changedNs)
            stamps_.push_back({path, *now});
    }

    Renames renames() {
        const RenameHalves removed = {std::move(removed_), [this](const OdString& path) {
                                          const Expected<CheckedUrl> url = CheckedUrl::check(
                                              workingTree_.repository().history().headUrl(path));
                                          return url ? url->digest() : OdString();
                                      }};
        const RenameHalves added = {std::move(newFiles_), [this](const OdString& path) {
                                        const sys::Outcome<OdString> digest =
                                            tryDigestOfFile(workingTree_.folder(), path);
                                        if (!digest)
                                            result_.unseen.push_back({path, digest.error()});
                                        return digest ? *digest : OdString();
                                    }};
        return findRenames(removed, added);
    }

    WorkingTree& workingTree_;
    const Seen& seen_;
    std::vector<common::StagedFile> changes_;
    /// How many of them are of known files, which come first.
    std::size_t knownChanges_ = 0;
    std::vector<SizedFile> newFiles_;
    std::vector<SizedFile> removed_;
    std::vector<NotedStamp> stamps_;
    WorkingChanges result_;
};

WorkingChanges changesIn(const Seen& seen, std::shared_ptr<const Baseline> baseline,
                         WorkingTree& workingTree) {
    Comparison comparison(workingTree, seen);
    WorkingChanges changes = comparison.compare(std::move(baseline));
    workingTree.note(comparison.takeSeen());
    return changes;
}

Expected<WorkingChanges> refuseUnseen(Expected<WorkingChanges> changes) {
    if (!changes || changes->unseen.empty())
        return changes;
    OdString text =
        tr(L"These files and folders cannot be looked at, so that nothing is done (qrv "
           L"ignore add leaves out what does not belong to the project):");
    for (const Unseen& unseen : changes->unseen)
        text += L"\n  " + textOf(unseen);
    return ErrorMessage{text};
}

bool holds(const std::vector<common::File>& files, const OdString& path) {
    return findSorted(files, [&path](const common::File& file) { return file.path <=> path; }) !=
           nullptr;
}

}  // namespace

std::size_t WorkingChanges::presentCount() const {
    return baseline->files().size() - files.removed.size() + files.added.size();
}

Expected<WorkingChanges> findChanges(WorkingTree& workingTree) {
    return refuseUnseen(findVisibleChanges(workingTree));
}

Expected<WorkingChanges> findVisibleChanges(WorkingTree& workingTree) {
    const std::unique_ptr<TreeScan> scan = workingTree.takeScan();
    // Meanwhile the tree is listed.
    std::shared_ptr<const Baseline> baseline = workingTree.baseline();
    if (Expected<void> looked = scan->lookAt(baseline); !looked)
        return std::move(looked).error();
    workingTree.tellOfRules(scan->messages());
    return changesIn(
        {.candidates = scan->candidates(), .others = scan->others(), .unseen = scan->unseen()},
        std::move(baseline), workingTree);
}

Expected<WorkingChanges> findChangesOf(WorkingTree& workingTree, std::vector<OdString> paths) {
    std::sort(paths.begin(), paths.end());
    paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
    const Expected<NamedFiles> named = lookAtNamed(workingTree, paths);
    if (!named)
        return named.error();
    workingTree.tellOfRules(named->messages);
    return refuseUnseen(changesIn({.candidates = named->candidates,
                                   .others = named->others,
                                   .unseen = named->unseen,
                                   .isWhole = false},
                                  named->baseline, workingTree));
}

std::vector<OdString> presentFiles(const WorkingChanges& changes) {
    std::vector<OdString> paths;
    paths.reserve(changes.presentCount());
    auto removed = changes.files.removed.begin();
    for (const KnownFile& file : changes.baseline->files()) {
        OdString path = textOf(file);
        if (removed != changes.files.removed.end() && removed->path == path)
            ++removed;
        else
            paths.push_back(std::move(path));
    }
    const auto old = static_cast<std::ptrdiff_t>(paths.size());
    for (const common::File& file : changes.files.added)
        paths.push_back(file.path);
    std::inplace_merge(paths.begin(), paths.begin() + old, paths.end());
    return paths;
}

bool isPresent(const OdString& path, const WorkingChanges& changes) {
    const FileChange change = changeOf(path, changes);
    if (change != FileChange::unchanged)
        return change != FileChange::removed;
    return findSorted(changes.baseline->files(), [&path](const KnownFile& known) {
               return compare(known.path, path);
           }) != nullptr;
}

std::vector<common::UnchangedFile> unchangedFiles(const WorkingChanges& changes,
                                                  WorkingTree& workingTree) {
    std::vector<common::UnchangedFile> files;
    for (const auto& [path, file] : workingTree.repository().headFiles()) {
        if (changeOf(path, changes) == FileChange::unchanged)
            files.push_back({path, file.contents});
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

}  // namespace qrv
