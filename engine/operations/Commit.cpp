#include <common/state/Transaction.h>
#include <common/worktree/RepoFileExplorer.h>
#include <engine/base/SortedLookup.h>
#include <engine/base/Translation.h>
#include <engine/operations/CommitInternal.h>
#include <engine/operations/WithRepositoryInternal.h>
#include <engine/paths/RelativePath.h>
#include <engine/repository/LogEntry.h>
#include <engine/tree/Shape.h>
#include <engine/worktree/Staging.h>
#include <platform/kernel/Clock.h>
#include <sys/Interruption.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace qrv {

namespace {

using common::FileChange;
using common::StagedFile;

constexpr std::int64_t millisecondsPerSecond = 1000;

/// What goes into the commit, and what each file was that was stored, both ordered by path.
struct StoredFiles {
    std::vector<FileDelta> deltas;
    std::vector<NotedStamp> stamps;
};

ErrorMessage nothingStaged() {
    return {tr(L"Nothing is staged (qrv add stages files)")};
}

/// Why there is nothing to commit: the library's own answer for a tree without changes.
ErrorMessage whyNothing(const WorkingChanges& changes, const WorkingTree& workingTree) {
    const common::RepoFileExplorer explorer(changes.files, workingTree.root());
    const Expected<std::vector<common::StatusRef>> files = explorer.stagedFiles();
    return files ? nothingStaged() : files.error();
}

/// The deltas are ordered by path.
std::optional<RelativePath> previousPath(const OdString& path, const std::vector<FileDelta>& deltas,
                                         const common::State& state) {
    const auto rename = state.renames.find(path);
    if (rename == state.renames.end())
        return std::nullopt;
    const FileDelta* const removal = findSorted(
        deltas, [&](const FileDelta& delta) { return delta.path.text() <=> rename->second; });
    return removal != nullptr && removal->url.isEmpty() ? std::optional(removal->path)
                                                        : std::nullopt;
}

Expected<StoredFiles> storeAll(Repository& repository, const std::vector<StagedFile>& staged) {
    StoredFiles stored;
    const std::unique_ptr<Work> progress =
        repository.caller().beginWork(tr(L"Storing"), staged.size());
    for (const StagedFile& file : staged) {
        if (sys::Interruption::isWanted())
            return ErrorMessage{tr(L"Interrupted; nothing was committed")};
        const Expected<RelativePath> path = RelativePath::check(file.path);
        if (!path)
            return path.error();
        if (file.change == FileChange::removed) {
            stored.deltas.push_back({*path, {}, std::nullopt, 0});
            continue;
        }
        const Expected<StoredFile> done =
            repository.storages().ofFile(file.path).storeFile(repository.root(), *path);
        if (!done)
            return done.error();
        stored.stamps.push_back({file.path, done->stamp});
        if (repository.history().headUrl(file.path) != done->url)
            stored.deltas.push_back({*path, done->url, std::nullopt, done->stamp.sizeBytes});
        progress->add(done->stamp.sizeBytes);
    }
    // The last moment: from here on it is quicker to end than to take back.
    if (sys::Interruption::isWanted())
        return ErrorMessage{tr(L"Interrupted; nothing was committed")};
    for (FileDelta& delta : stored.deltas)
        delta.previousPath = previousPath(delta.path, stored.deltas, repository.state());
    if (const Expected<void> flushed = repository.storages().flush(repository.root()); !flushed)
        return flushed.error();
    return stored;
}

/// What is committed is what the files held when they were stored. One that somebody has changed
/// since has another stamp by now. They are ordered by path.
StampOf stampsOf(std::vector<NotedStamp> stamps) {
    return [stamps = std::move(stamps)](const OdString& path) {
        const NotedStamp* const noted =
            findSorted(stamps, [&path](const NotedStamp& each) { return each.path <=> path; });
        return noted != nullptr ? noted->stamp : std::nullopt;
    };
}

CommitEntry addToHistory(WorkingTree& workingTree, StoredFiles stored, const CommitRequest& text) {
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
    commit.deltas = std::move(stored.deltas);
    CommitEntry entry = history.add(commit);
    history.changeHeadFiles(commit.deltas,
                            stampsOf(safeStamps(std::move(stored.stamps), workingTree.folder())));
    history.setNote(headNote, entry.hash);
    history.setNote(mergeNote, {});
    history.setReference(workingTree.repository().branch(), common::RefType::Branch, entry.hash);
    transaction.commit();
    workingTree.repository().forgetHeadFiles();
    return entry;
}

void clearStage(common::Cache& cache) {
    common::Transaction transaction = cache.getTransaction();
    cache.write().stagedFiles.clear();
    cache.write().renames.clear();
    transaction.commit();
}

/// What a commit asks of the working tree: the staged files, and when nothing is left of them, all,
/// which decides what is told.
Expected<WorkingChanges> changesOfStage(WorkingTree& workingTree) {
    const common::State& state = workingTree.repository().state();
    std::vector<OdString> paths;
    for (const StagedFile& file : state.stagedFiles)
        paths.push_back(file.path);
    Expected<WorkingChanges> changes = findChangesOf(workingTree, std::move(paths));
    if (!changes || !stagedChanges(workingTree.repository().state(), *changes).empty())
        return changes;
    return findChanges(workingTree);
}

OdString trimmed(const OdString& message) {
    static constexpr const char* blanks = " \t\r\n";
    const std::string text = message.toNarrow();
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string::npos)
        return {};
    return OdString::fromNarrow(text.substr(begin, text.find_last_not_of(blanks) + 1 - begin));
}

}  // namespace

Expected<CommitEntry> commitStaged(WorkingTree& workingTree, const WorkingChanges& changes,
                                   const CommitRequest& text) {
    // Files that wait for their names would be left behind, hundreds of them.
    const std::shared_ptr<void> deferred = workingTree.caller().deferInterruption();
    if (const std::size_t count = workingTree.repository().state().conflicts.size(); count > 0)
        return ErrorMessage{
            OdString::format(tr(L"Conflicts to resolve before a commit: %i (qrv resolve)"), count)};
    const std::vector<StagedFile> staged = stagedChanges(workingTree.repository().state(), changes);
    const bool isMerge = !workingTree.repository().history().note(mergeNote).isEmpty();
    if (staged.empty() && !isMerge)
        return whyNothing(changes, workingTree);
    Expected<StoredFiles> stored = storeAll(workingTree.repository(), staged);
    if (!stored)
        return stored.error();
    if (stored->deltas.empty() && !isMerge)
        return nothingStaged();
    if (const Expected<void> possible =
            checkShape(questionsOfHead(workingTree.repository().history()), stored->deltas);
        !possible)
        return possible.error();
    CommitEntry entry = addToHistory(workingTree, std::move(*stored), text);
    clearStage(workingTree.repository().cache());
    logEvent(OdString::format(L"commit %i on %ls", entry.number,
                              quotedName(workingTree.repository().branch())),
             workingTree.root(), workingTree.folder(), workingTree.caller());
    if (const Expected<void> saved = workingTree.repository().saveState(); !saved)
        return saved.error();
    return entry;
}

Expected<Committed> commit(const std::string& folder, const CommitRequest& request,
                           Caller& caller) {
    const CommitRequest text = {request.author, trimmed(request.message)};
    if (text.message.isEmpty())
        return ErrorMessage{tr(L"A commit needs a message that says what was done")};
    const auto action = [&](WorkingTree& workingTree) -> Expected<Committed> {
        const Expected<WorkingChanges> changes = changesOfStage(workingTree);
        if (!changes)
            return changes.error();
        Expected<CommitEntry> entry = commitStaged(workingTree, *changes, text);
        if (!entry)
            return entry.error();
        // A look is what often comes next.
        workingTree.keepBaseline();
        return Committed{std::move(*entry), workingTree.repository().branch()};
    };
    return withRepository(folder, Repository::Use::change, caller, action);
}

}  // namespace qrv
