#include <common/state/Index.h>
#include <common/state/Transaction.h>
#include <engine/base/Translation.h>
#include <engine/history/CommitName.h>
#include <engine/journal/Application.h>
#include <engine/journal/Completion.h>
#include <engine/journal/Perform.h>
#include <engine/journal/Preconditions.h>
#include <engine/journal/Recovery.h>
#include <engine/journal/StepsToTree.h>
#include <engine/operations/MergeInternal.h>
#include <engine/operations/WithRepositoryInternal.h>
#include <engine/repository/LogEntry.h>
#include <engine/tree/Shape.h>
#include <engine/tree/ThreeWay.h>
#include <engine/worktree/Staging.h>
#include <platform/kernel/Clock.h>

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

namespace qrv {

namespace {

using common::FileChange;

constexpr std::int64_t millisecondsPerSecond = 1000;

Expected<void> checkNothingStaged(WorkingTree& workingTree) {
    const common::State& state = workingTree.repository().state();
    std::vector<OdString> paths;
    for (const common::StagedFile& file : state.stagedFiles)
        paths.push_back(file.path);
    const Expected<WorkingChanges> changes = findChangesOf(workingTree, std::move(paths));
    if (!changes)
        return changes.error();
    if (stagedChanges(state, *changes).empty())
        return {};
    return ErrorMessage{
        tr(L"Commit the staged files first (qrv commit), or take them off the "
           L"stage (qrv unstage --all)")};
}

/// The library notes the conflict; what it is told of the change makes that of it.
Expected<void> noteConflict(WorkingTree& workingTree, const MergeConflict& conflict) {
    const Host host;
    common::IoInterfaceRef io(host);
    const common::Versions<common::VersionedFile, common::VersionedFile> versions = {
        {conflict.path, conflict.localUrl}, {conflict.path, conflict.remoteUrl}};
    const Expected<bool> noted =
        workingTree.repository()
            .storages()
            .ofUrl(conflict.remoteUrl)
            .inFileUpdate(workingTree.root(), io, workingTree.repository().cache(), versions,
                          conflict.remote);
    return noted ? Expected<void>() : noted.error();
}

Expected<void> recordConflicts(WorkingTree& workingTree, const ThreeWayResult& files,
                               const OdString& hash) {
    Repository& repository = workingTree.repository();
    common::Transaction transaction = repository.cache().getTransaction();
    for (const MergeConflict& conflict : files.conflicts) {
        if (const Expected<void> noted = noteConflict(workingTree, conflict); !noted)
            return noted.error();
        common::updateConflictData(repository.cache(),
                                   common::ConflictData(conflict.path, conflict.remoteUrl,
                                                        conflict.local, conflict.remote));
    }
    common::State& state = repository.cache().write();
    for (const TreeStep& step : files.taken) {
        const FileChange change = step.after.isEmpty()    ? FileChange::removed
                                  : step.before.isEmpty() ? FileChange::added
                                                          : FileChange::modified;
        state.stagedFiles.emplace_back(step.path, change);
    }
    transaction.commit();
    if (const Expected<void> saved = repository.saveState(); !saved)
        return saved.error();
    DatabaseTransaction change(repository.history().database());
    repository.history().setNote(mergeNote, hash);
    forgetEntry(repository.history());
    change.commit();
    return {};
}

std::vector<FileDelta> deltasOf(const ThreeWayResult& files) {
    std::vector<FileDelta> deltas;
    for (const TreeStep& step : files.taken)
        deltas.push_back({step.path, step.after, {}, step.sizeBytes});
    return deltas;
}

CommitEntry addMergeCommit(Repository& repository, const OdString& hash,
                           const ThreeWayResult& files, const MergeRequest& request) {
    NewCommit commit;
    commit.parents = {repository.headCommit(), hash};
    commit.author = request.author;
    commit.message = request.message.value_or(
        OdString::format(L"Merge '%ls' into '%ls'", request.commit, repository.branch()));
    commit.timeSeconds = kernel::now() / millisecondsPerSecond;
    commit.deltas = deltasOf(files);
    DatabaseTransaction transaction(repository.history().database());
    CommitEntry entry = repository.history().add(commit);
    transaction.commit();
    return entry;
}

/// Ordered by path.
std::vector<TreeStep> touchedFiles(const ThreeWayResult& files) {
    std::vector<TreeStep> touched = files.taken;
    for (const MergeConflict& conflict : files.conflicts)
        touched.push_back({conflict.path, conflict.localUrl, conflict.localUrl, 0});
    std::sort(touched.begin(), touched.end(),
              [](const TreeStep& one, const TreeStep& other) { return one.path < other.path; });
    return touched;
}

/// What was staged and is again as in HEAD must not become part of the merge.
void forgetStage(Repository& repository) {
    if (repository.state().stagedFiles.empty() && repository.state().renames.empty())
        return;
    common::State& state = repository.cache().write();
    state.stagedFiles.clear();
    state.renames.clear();
}

JournalEntry entryOf(const OdString& name, std::vector<TreeStep> steps) {
    JournalEntry entry;
    entry.title = OdString::format(tr(L"merge of '%ls'"), name);
    entry.steps = std::move(steps);
    return entry;
}

Expected<Merged> fastForward(WorkingTree& workingTree, const OdString& hash, const OdString& name) {
    Repository& repository = workingTree.repository();
    JournalEntry entry = entryOf(name, stepsFromHead(repository.history(), hash));
    entry.branch = repository.branch();
    entry.commit = hash;
    const Expected<WorkingChanges> changes = findChangesOf(workingTree, pathsOf(entry.steps));
    if (!changes)
        return changes.error();
    if (const Expected<void> unharmed = checkNoLocalChanges(workingTree, entry.steps, *changes);
        !unharmed)
        return unharmed.error();
    forgetStage(repository);
    if (const Expected<void> done = perform(workingTree, entry, *changes); !done)
        return done.error();
    return Merged{.kind = Merged::Kind::fastForward,
                  .files = pathsOf(entry.steps),
                  .conflicts = {},
                  .commit = repository.history().commit(hash)};
}

/// What speaks against merging these files, before anything is done.
Expected<Sightings> checkMerge(WorkingTree& workingTree, const ThreeWayResult& files) {
    const std::vector<TreeStep> touched = touchedFiles(files);
    const Expected<WorkingChanges> changes = findChangesOf(workingTree, pathsOf(touched));
    if (!changes)
        return changes.error();
    if (const Expected<void> unharmed = checkNoLocalChanges(workingTree, touched, *changes);
        !unharmed)
        return unharmed.error();
    if (const Expected<void> possible =
            checkShape(questionsOfHead(workingTree.repository().history()), deltasOf(files));
        !possible)
        return possible.error();
    return checkPreconditions(workingTree, files.taken, *changes);
}

Expected<Merged> mergeThreeWays(WorkingTree& workingTree, const OdString& hash,
                                const OdString& name, const MergeRequest& request) {
    Repository& repository = workingTree.repository();
    History& history = repository.history();
    const OdString base = history.mergeBase(repository.headCommit(), hash).value_or(OdString());
    const ThreeWayResult files = compareThreeWays(history.difference(base, history.note(headNote)),
                                                  history.difference(base, hash));
    const Expected<Sightings> sightings = checkMerge(workingTree, files);
    if (!sightings)
        return sightings.error();

    const bool isClean = files.conflicts.empty();
    Merged merged;
    merged.kind = isClean ? Merged::Kind::committed : Merged::Kind::conflicts;
    merged.files = pathsOf(files.taken);
    JournalEntry entry = entryOf(name, files.taken);
    if (isClean) {
        merged.commit = addMergeCommit(repository, hash, files, request);
        entry.branch = repository.branch();
        entry.commit = merged.commit->hash;
    } else {
        entry.recovery = JournalEntry::Recovery::rollBack;
    }
    forgetStage(repository);
    noteEntry(history, entry);
    const Expected<AppliedStamps> stamps = applyAll(workingTree, entry, *sightings);
    if (!stamps)
        return rollBackAfter(workingTree, entry, stamps.error());
    const Expected<void> finished =
        isClean ? finish(workingTree, entry, *stamps) : recordConflicts(workingTree, files, hash);
    if (!finished)
        return finished.error();
    merged.conflicts = repository.state().conflicts;
    return merged;
}

}  // namespace

Expected<void> checkNoMerge(Repository& repository) {
    if (repository.history().note(mergeNote).isEmpty() && repository.state().conflicts.empty())
        return {};
    return ErrorMessage{
        tr(L"A merge is going on: resolve its conflicts and commit it, or take it "
           L"back with qrv merge --abort")};
}

Expected<Merged> merge(WorkingTree& workingTree, const MergeRequest& request) {
    Repository& repository = workingTree.repository();
    const Expected<OdString> hash =
        findCommit(repository.history(), request.commit, repository.branch());
    if (!hash)
        return hash.error();
    if (const Expected<void> none = checkNoMerge(repository); !none)
        return none.error();
    const OdString head = repository.headCommit();
    if (!head.isEmpty() && repository.history().buildsOn(head, *hash))
        return Merged();
    if (const Expected<void> none = checkNothingStaged(workingTree); !none)
        return none.error();
    logEvent(OdString::format(L"merge of %ls into %ls", *hash, quotedName(repository.branch())),
             workingTree.root(), workingTree.folder(), workingTree.caller());
    if (head.isEmpty() || repository.history().buildsOn(*hash, head))
        return fastForward(workingTree, *hash, request.commit);
    return mergeThreeWays(workingTree, *hash, request.commit, request);
}

Expected<void> abortMerge(WorkingTree& workingTree, bool force) {
    Repository& repository = workingTree.repository();
    if (const Expected<void> none = checkNoMerge(repository); none)
        return ErrorMessage{tr(L"No merge is going on")};
    // A file may be in both, and the steps are to be ordered.
    std::set<OdString> paths;
    for (const common::StagedFile& file : repository.state().stagedFiles)
        paths.insert(file.path);
    for (const common::ConflictData& conflict : repository.state().conflicts)
        paths.insert(conflict.path);
    const std::vector<OdString> ordered(paths.begin(), paths.end());
    const Expected<WorkingChanges> changes = findChangesOf(workingTree, ordered);
    if (!changes)
        return changes.error();
    Tree target;
    for (const OdString& path : ordered) {
        if (std::optional<HeadFile> file = repository.history().headFile(path))
            target.emplace(std::move(file->path), std::move(file->file));
    }
    const Expected<std::vector<TreeStep>> steps = stepsToTree(
        workingTree, target, ordered, *changes, force ? Unsaved::store : Unsaved::refuse);
    if (!steps)
        return steps.error();
    return rollBackMerge(workingTree, *steps, *changes);
}

Expected<Merged> merge(const std::string& folder, const MergeRequest& request, Caller& caller) {
    return withRepository(
        folder, Repository::Use::change, caller,
        [&request](WorkingTree& workingTree) { return merge(workingTree, request); });
}

Expected<void> abortMerge(const std::string& folder, bool force, Caller& caller) {
    return withRepository(
        folder, Repository::Use::change, caller,
        [force](WorkingTree& workingTree) { return abortMerge(workingTree, force); });
}

}  // namespace qrv
