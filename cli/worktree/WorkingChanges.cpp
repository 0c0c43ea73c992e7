#include <cli/Message.h>
#include <cli/safety/StorageUrlCheck.h>
#include <cli/worktree/WorkingChanges.h>
#include <cli/worktree/WorkingFile.h>
#include <common/state/Index.h>
#include <common/state/Transaction.h>
#include <common/storage/StorageUrl.h>
#include <common/worktree/CollectFiles.h>
#include <common/worktree/FileIdentity.h>

#include <algorithm>
#include <cstddef>
#include <future>
#include <iterator>
#include <memory>
#include <span>
#include <utility>

namespace qrv_cli {

namespace {

using common::FileChange;

/// The coarsest step in which a file system counts its times.
constexpr std::int64_t coarsestTimeStepTicks = 20'000'000;

struct PresentFile {
    OdString path;
    std::int64_t sizeBytes = 0;
    std::int64_t ticks = 0;
};

/// What reading a file told, for the index.
struct Verdict {
    OdString path;
    std::int64_t ticks = 0;
    bool isModified = false;
};

/// What lies in the working tree. Both lists are ordered by path.
struct Listing {
    std::vector<PresentFile> files;
    std::vector<OdString> links;
    /// What is wrong with the ignore rules.
    std::vector<OdString> messages;
};

void note(const OdString& path, const sys::Outcome<sys::FileStatus>& status, Listing& listing) {
    // What went away since the scan is not there.
    if (!status)
        return;
    if (status->kind == sys::FileKind::link)
        listing.links.push_back(path);
    else if (status->kind == sys::FileKind::regular)
        listing.files.push_back({path, status->sizeBytes, toTicks(status->modifiedNs)});
}

Listing lookAll(const sys::Folder& root, std::span<const OdString> paths) {
    Listing listing;
    listing.files.reserve(paths.size());
    for (const OdString& path : paths)
        note(path, root.statusOfListed(path.toNarrow()), listing);
    return listing;
}

template <class T>
void append(std::vector<T>& to, std::vector<T> from) {
    to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
}

std::vector<OdString> sortedPaths(std::vector<common::File> files) {
    std::vector<OdString> paths;
    paths.reserve(files.size());
    for (common::File& file : files)
        paths.push_back(std::move(file.path));
    std::sort(paths.begin(), paths.end());
    return paths;
}

/// Asking the system for every file's size and time takes most of the time of a status, and two can
/// ask at once.
Expected<Listing> listTree(const common::RootPath& root, const sys::Folder& folder) {
    std::vector<OdString> messages;
    const auto remember = [&messages](const OdString& text) { messages.push_back(text); };
    Expected<std::vector<common::File>> files = common::collectRepoFiles(remember, root);
    if (!files)
        return files.error();
    const std::vector<OdString> paths = sortedPaths(std::move(*files));
    const std::span<const OdString> all(paths);
    const std::size_t half = paths.size() / 2;
    std::future<Listing> second = std::async(
        std::launch::async, [&folder, all, half] { return lookAll(folder, all.subspan(half)); });
    Listing listing = lookAll(folder, all.first(half));
    Listing rest = second.get();
    append(listing.files, std::move(rest.files));
    append(listing.links, std::move(rest.links));
    listing.messages = std::move(messages);
    return listing;
}

/// In the order of the paths, like the trees and the index, so that one walk compares them.
class Comparison {
public:
    Comparison(Workspace& workspace, Listing listing)
        : workspace_(workspace),
          head_(workspace.headFiles()),
          index_(workspace.state().index),
          files_(std::move(listing.files)) {
        result_.links = std::move(listing.links);
        const sys::Outcome<sys::FileStatus> state = workspace.folder().status(".qrv/qrv.state");
        if (state)
            trustedBeforeTicks_ = toTicks(state->modifiedNs) - coarsestTimeStepTicks;
    }

    void compare() {
        addHiddenHeadFiles();
        classify();
        findRenames();
    }

    WorkingChanges take() { return std::move(result_); }
    const std::vector<Verdict>& verdicts() const { return verdicts_; }

private:
    /// A file of HEAD stays versioned when a rule ignores it later.
    void addHiddenHeadFiles() {
        Listing hidden;
        auto next = files_.begin();
        for (const auto& [path, file] : head_) {
            while (next != files_.end() && next->path < path)
                ++next;
            if (next == files_.end() || next->path != path)
                // Not listed: its folder may have become a link.
                note(path, workspace_.folder().status(path.toNarrow()), hidden);
        }
        const auto middle = static_cast<std::ptrdiff_t>(files_.size());
        append(files_, std::move(hidden.files));
        std::inplace_merge(
            files_.begin(), files_.begin() + middle, files_.end(),
            [](const PresentFile& one, const PresentFile& other) { return one.path < other.path; });
        for (const OdString& link : hidden.links) {
            const auto place = std::lower_bound(result_.links.begin(), result_.links.end(), link);
            if (place == result_.links.end() || *place != link)
                result_.links.insert(place, link);
        }
    }

    void classify() {
        auto head = head_.begin();
        for (const PresentFile& file : files_) {
            for (; head != head_.end() && head->first < file.path; ++head)
                addRemoved(head->first);
            result_.present.push_back(file.path);
            if (head == head_.end() || head->first != file.path) {
                add(file.path, FileChange::added, result_.files.added);
                continue;
            }
            if (isModified(file, head->second))
                add(file.path, FileChange::modified, result_.files.modified);
            else
                result_.files.unchanged.push_back({file.path, head->second.url});
            ++head;
        }
        for (; head != head_.end(); ++head)
            addRemoved(head->first);
    }

    void addRemoved(const OdString& path) { add(path, FileChange::removed, result_.files.removed); }

    void add(const OdString& path, FileChange change, std::vector<common::File>& files) {
        files.emplace_back(path);
        common::StatusRef& status = result_.files.changes.emplace_back(path, change);
        for (const common::ConflictData& conflict : workspace_.state().conflicts) {
            if (conflict.path == path)
                status.conflictInfo() = std::make_shared<common::ConflictData>(conflict);
        }
    }

    bool isModified(const PresentFile& file, const TreeFile& head) {
        if (file.sizeBytes != head.sizeBytes)
            return true;
        while (nextEntry_ != index_.end() && nextEntry_->first < file.path)
            ++nextEntry_;
        // "Modified" is not believed: a commit that was interrupted before it wrote the state may
        // have made it untrue.
        const bool isNoted = nextEntry_ != index_.end() && nextEntry_->first == file.path &&
                             nextEntry_->second.lastChecked == file.ticks &&
                             !nextEntry_->second.modified;
        if (isNoted && file.ticks < trustedBeforeTicks_)
            return false;
        const bool differs = differsFrom(file.path, head.url);
        verdicts_.push_back({file.path, file.ticks, differs});
        return differs;
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
        std::multimap<std::int64_t, OdString> removedBySize;
        for (const common::File& file : result_.files.removed)
            removedBySize.emplace(head_.at(file.path).sizeBytes, file.path);
        if (removedBySize.empty())
            return;
        for (const PresentFile& file : files_) {
            // All empty files are equal, which says nothing about where one came from.
            if (file.sizeBytes != 0 && !head_.contains(file.path))
                findPrevious(file, removedBySize);
        }
    }

    void findPrevious(const PresentFile& file,
                      std::multimap<std::int64_t, OdString>& removedBySize) {
        const auto [begin, end] = removedBySize.equal_range(file.sizeBytes);
        if (begin == end)
            return;
        const Expected<OdString> digest = digestOfFile(workspace_.folder(), file.path);
        const auto isSame = [this, &digest](const auto& removed) {
            const Expected<CheckedUrl> url = CheckedUrl::check(head_.at(removed.second).url);
            return digest && url && *digest == url->digest();
        };
        const auto found = std::find_if(begin, end, isSame);
        if (found == end)
            return;
        result_.renames.emplace(file.path, found->second);
        removedBySize.erase(found);
    }

    Workspace& workspace_;
    const Tree& head_;
    const std::map<OdString, common::IndexData>& index_;
    std::map<OdString, common::IndexData>::const_iterator nextEntry_ = index_.begin();
    // Nothing is trusted without a state file.
    std::int64_t trustedBeforeTicks_ = 0;
    std::vector<PresentFile> files_;
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
    std::future<Expected<Listing>> scan = std::async(std::launch::async, [&workspace] {
        return listTree(workspace.root(), workspace.folder());
    });
    // Meanwhile, as neither needs the other.
    workspace.headFiles();
    Expected<Listing> listing = scan.get();
    if (!listing)
        return listing.error();
    for (const OdString& message : listing->messages)
        printMessage(message);
    Comparison comparison(workspace, std::move(*listing));
    comparison.compare();
    refreshIndex(workspace, comparison.verdicts());
    return comparison.take();
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
