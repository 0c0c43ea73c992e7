#include <common/state/Index.h>
#include <common/state/Transaction.h>
#include <common/worktree/RepoFileExplorer.h>
#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/operations/CommitInternal.h>
#include <engine/paths/RelativePath.h>
#include <engine/repository/LogEntry.h>
#include <engine/tree/Shape.h>
#include <engine/worktree/Staging.h>
#include <engine/worktree/Ticks.h>
#include <platform/kernel/Clock.h>
#include <sys/Interruption.h>

#include <algorithm>
#include <map>
#include <utility>

namespace qrv {

namespace {

using common::FileChange;
using common::StagedFile;

constexpr std::int64_t millisecondsPerSecond = 1000;

/// What goes into the commit, and what was seen of each file that was stored.
struct StoredFiles {
    std::vector<FileDelta> deltas;
    std::map<OdString, std::int64_t> ticksByPath;
};

ErrorMessage nothingStaged() {
    return {tr(L"Nothing is staged (qrv add stages files)")};
}

/// The library's own answer for a tree without changes.
Expected<void> checkStage(const WorkingChanges& changes, const std::vector<StagedFile>& staged,
                          const WorkingTree& workingTree) {
    common::RepoFileExplorer explorer(changes.files, workingTree.root());
    for (const StagedFile& file : staged)
        explorer.stage(file);
    const Expected<std::vector<common::StatusRef>> files = explorer.stagedFiles();
    if (!files)
        return files.error();
    return files->empty() ? Expected<void>(nothingStaged()) : Expected<void>();
}

Expected<sys::FileStatus> look(const WorkingTree& workingTree, const OdString& path) {
    const sys::Outcome<sys::FileStatus> status = workingTree.folder().status(path.toNarrow());
    if (!status)
        return systemFailure(tr(L"'%ls' cannot be read: %ls"), path, status.error());
    return *status;
}

Expected<void> storeFile(WorkingTree& workingTree, const OdString& path, StoredFiles& stored) {
    const Expected<RelativePath> safe = RelativePath::check(path);
    if (!safe)
        return safe.error();
    const Expected<sys::FileStatus> before = look(workingTree, path);
    if (!before)
        return before.error();
    const Expected<OdString> url =
        workingTree.repository().storages().ofFile(path).store(workingTree.root(), path);
    if (!url)
        return url.error();
    const Expected<sys::FileStatus> after = look(workingTree, path);
    if (!after)
        return after.error();
    if (after->sizeBytes != before->sizeBytes || after->modifiedNs != before->modifiedNs)
        return ErrorMessage{
            OdString::format(tr(L"'%ls' was changed while it was stored; try again when its "
                                L"program has finished writing"),
                             printable(path))};
    stored.ticksByPath.emplace(path, toTicks(after->modifiedNs));
    const Tree& head = workingTree.repository().headFiles();
    const auto old = head.find(path);
    if (old == head.end() || old->second.url != *url)
        stored.deltas.push_back({*safe, *url, std::nullopt, after->sizeBytes});
    return {};
}

std::optional<RelativePath> previousPath(const OdString& path, const std::vector<FileDelta>& deltas,
                                         const common::State& state) {
    const auto rename = state.renames.find(path);
    if (rename == state.renames.end())
        return std::nullopt;
    const auto removal = std::find_if(deltas.begin(), deltas.end(), [&](const FileDelta& delta) {
        return delta.url.isEmpty() && delta.path == rename->second;
    });
    return removal == deltas.end() ? std::nullopt : std::optional(removal->path);
}

Expected<StoredFiles> storeAll(WorkingTree& workingTree, const std::vector<StagedFile>& staged) {
    StoredFiles stored;
    const std::unique_ptr<Work> progress =
        workingTree.caller().beginWork(tr(L"Storing"), staged.size());
    for (const StagedFile& file : staged) {
        if (sys::Interruption::isWanted())
            return ErrorMessage{tr(L"Interrupted; nothing was committed")};
        if (file.change == FileChange::removed) {
            Expected<RelativePath> path = RelativePath::check(file.path);
            if (!path)
                return path.error();
            stored.deltas.push_back({std::move(*path), {}, std::nullopt, 0});
            continue;
        }
        if (const Expected<void> done = storeFile(workingTree, file.path, stored); !done)
            return done.error();
        progress->add(stored.deltas.empty() ? 0 : stored.deltas.back().sizeBytes);
    }
    // The last moment: from here on it is quicker to end than to take back.
    if (sys::Interruption::isWanted())
        return ErrorMessage{tr(L"Interrupted; nothing was committed")};
    for (FileDelta& delta : stored.deltas)
        delta.previousPath =
            previousPath(delta.path, stored.deltas, workingTree.repository().state());
    if (const Expected<void> flushed =
            workingTree.repository().storages().objects().flush(workingTree.root());
        !flushed)
        return flushed.error();
    return stored;
}

CommitEntry addToHistory(WorkingTree& workingTree, std::vector<FileDelta> deltas,
                         const CommitText& text) {
    History& history = workingTree.repository().history();
    DatabaseTransaction transaction(history.database());
    NewCommit commit;
    for (const OdString& parent :
         {workingTree.repository().headCommit(), history.note(mergeNote)}) {
        if (!parent.isEmpty())
            commit.parents.push_back(parent);
    }
    commit.author = text.author;
    commit.message = text.message;
    commit.timeSeconds = kernel::now() / millisecondsPerSecond;
    commit.deltas = std::move(deltas);
    CommitEntry entry = history.add(commit);
    history.changeHeadFiles(commit.deltas);
    history.setNote(headNote, entry.hash);
    history.setNote(mergeNote, {});
    history.setReference(workingTree.repository().branch(), common::RefType::Branch, entry.hash);
    transaction.commit();
    workingTree.repository().forgetHeadFiles();
    return entry;
}

void clearStage(WorkingTree& workingTree, const std::map<OdString, std::int64_t>& ticksByPath) {
    common::Cache& cache = workingTree.repository().cache();
    common::Transaction transaction = cache.getTransaction();
    common::updateIndex(cache, workingTree.root());
    // The library notes the times that the files have now; what is committed is what they held when
    // they were stored.
    for (const StagedFile& file : cache.read().stagedFiles) {
        const auto entry = cache.read().index.find(file.path);
        const auto ticks = ticksByPath.find(file.path);
        if (entry != cache.read().index.end() &&
            (ticks == ticksByPath.end() || ticks->second != entry->second.lastChecked))
            common::removeIndex(file.path, cache);
    }
    cache.write().stagedFiles.clear();
    cache.write().renames.clear();
    transaction.commit();
}

}  // namespace

Expected<CommitEntry> commitStaged(WorkingTree& workingTree, const WorkingChanges& changes,
                                   const CommitText& text) {
    // Files that wait for their names would be left behind, hundreds of them.
    const sys::Interruption interruption;
    if (const std::size_t count = workingTree.repository().state().conflicts.size(); count > 0)
        return ErrorMessage{
            OdString::format(tr(L"Conflicts to resolve before a commit: %i (qrv resolve)"), count)};
    const std::vector<StagedFile> staged = stagedChanges(workingTree.repository().state(), changes);
    const bool isMerge = !workingTree.repository().history().note(mergeNote).isEmpty();
    if (const Expected<void> checked = checkStage(changes, staged, workingTree);
        !checked && !isMerge)
        return checked.error();
    Expected<StoredFiles> stored = storeAll(workingTree, staged);
    if (!stored)
        return stored.error();
    if (stored->deltas.empty() && !isMerge)
        return nothingStaged();
    if (const Expected<void> possible =
            checkShape(workingTree.repository().headFiles(), stored->deltas);
        !possible)
        return possible.error();
    CommitEntry entry = addToHistory(workingTree, std::move(stored->deltas), text);
    clearStage(workingTree, stored->ticksByPath);
    logEvent(OdString::format(L"commit %i on %ls", entry.number,
                              quotedName(workingTree.repository().branch())),
             workingTree.root(), workingTree.folder(), workingTree.caller());
    if (const Expected<void> saved = workingTree.repository().saveState(); !saved)
        return saved.error();
    return entry;
}

}  // namespace qrv
