#include <common/state/Index.h>
#include <common/state/Transaction.h>
#include <engine/base/Translation.h>
#include <engine/journal/Application.h>
#include <engine/journal/ApplicationInternal.h>
#include <engine/journal/Preconditions.h>
#include <engine/journal/StepsToTree.h>
#include <engine/operations/MergeInternal.h>
#include <engine/repository/LogEntry.h>
#include <engine/tree/Shape.h>
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

Expected<void> checkNothingStaged(const WorkingTree& workingTree, const WorkingChanges& changes) {
    if (stagedChanges(workingTree.repository().stateWithoutIndex(), changes).empty())
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
    common::Transaction transaction = workingTree.repository().cache().getTransaction();
    for (const MergeConflict& conflict : files.conflicts) {
        if (const Expected<void> noted = noteConflict(workingTree, conflict); !noted)
            return noted.error();
        common::updateConflictData(workingTree.repository().cache(),
                                   common::ConflictData(conflict.path, conflict.remoteUrl,
                                                        conflict.local, conflict.remote));
    }
    common::State& state = workingTree.repository().cache().write();
    for (const PlannedFile& step : files.taken) {
        const FileChange change = step.after.isEmpty()    ? FileChange::removed
                                  : step.before.isEmpty() ? FileChange::added
                                                          : FileChange::modified;
        state.stagedFiles.emplace_back(step.path, change);
        if (change == FileChange::modified)
            common::updateIndex(step.path, workingTree.repository().cache(), workingTree.root(),
                                true);
        else
            common::removeIndex(step.path, workingTree.repository().cache());
    }
    transaction.commit();
    if (const Expected<void> saved = workingTree.repository().saveState(); !saved)
        return saved.error();
    DatabaseTransaction change(workingTree.repository().history().database());
    workingTree.repository().history().setNote(mergeNote, hash);
    forgetPlan(workingTree.repository().history());
    change.commit();
    return {};
}

std::vector<FileDelta> deltasOf(const ThreeWayResult& files) {
    std::vector<FileDelta> deltas;
    for (const PlannedFile& step : files.taken)
        deltas.push_back({step.path, step.after, {}, step.sizeBytes});
    return deltas;
}

CommitEntry addMergeCommit(WorkingTree& workingTree, const OdString& hash,
                           const ThreeWayResult& files, const CommitText& text) {
    NewCommit commit;
    commit.parents = {workingTree.repository().headCommit(), hash};
    commit.author = text.author;
    commit.message = text.message;
    commit.timeSeconds = kernel::now() / millisecondsPerSecond;
    commit.deltas = deltasOf(files);
    DatabaseTransaction transaction(workingTree.repository().history().database());
    CommitEntry entry = workingTree.repository().history().add(commit);
    transaction.commit();
    return entry;
}

/// Ordered by path.
std::vector<PlannedFile> touchedFiles(const ThreeWayResult& files) {
    std::vector<PlannedFile> touched = files.taken;
    for (const MergeConflict& conflict : files.conflicts)
        touched.push_back({conflict.path, conflict.localUrl, conflict.localUrl, 0});
    std::sort(touched.begin(), touched.end(), [](const PlannedFile& one, const PlannedFile& other) {
        return one.path < other.path;
    });
    return touched;
}

/// What was staged and is again as in HEAD must not become part of the merge.
void forgetStage(WorkingTree& workingTree) {
    if (workingTree.repository().state().stagedFiles.empty() &&
        workingTree.repository().state().renames.empty())
        return;
    common::State& state = workingTree.repository().cache().write();
    state.stagedFiles.clear();
    state.renames.clear();
}

Plan planOf(const OdString& name, const ThreeWayResult& files) {
    Plan plan;
    plan.title = OdString::format(tr(L"merge of '%ls'"), name);
    plan.files = files.taken;
    return plan;
}

Expected<MergeOutcome> goForward(WorkingTree& workingTree, const OdString& hash,
                                 const OdString& name, const WorkingChanges& changes) {
    MergeOutcome outcome;
    outcome.kind = MergeOutcome::Kind::forward;
    const std::vector<PlannedFile> steps = stepsBetween(
        workingTree.repository().headFiles(), workingTree.repository().history().tree(hash));
    outcome.files.taken = steps;
    if (const Expected<void> unharmed = checkUnharmed(workingTree, steps, changes); !unharmed)
        return unharmed.error();
    Plan plan = planOf(name, outcome.files);
    plan.branch = workingTree.repository().branch();
    plan.commit = hash;
    forgetStage(workingTree);
    if (const Expected<void> done = carryOut(workingTree, plan, changes); !done)
        return done.error();
    outcome.commit = workingTree.repository().history().commit(hash);
    return outcome;
}

Expected<MergeOutcome> mergeThreeWays(WorkingTree& workingTree, const OdString& hash,
                                      const OdString& name, const WorkingChanges& changes,
                                      const CommitText& text) {
    History& history = workingTree.repository().history();
    const std::optional<OdString> base =
        history.mergeBase(workingTree.repository().headCommit(), hash);
    MergeOutcome outcome;
    outcome.files = compareThreeWays(history.tree(base.value_or(OdString())),
                                     workingTree.repository().headFiles(), history.tree(hash));
    if (const Expected<void> unharmed =
            checkUnharmed(workingTree, touchedFiles(outcome.files), changes);
        !unharmed)
        return unharmed.error();

    if (const Expected<void> possible =
            checkShape(workingTree.repository().headFiles(), deltasOf(outcome.files));
        !possible)
        return possible.error();

    const Expected<Sightings> sightings =
        lookBeforeBeginning(workingTree, outcome.files.taken, changes);
    if (!sightings)
        return sightings.error();

    const bool isClean = outcome.files.conflicts.empty();
    outcome.kind = isClean ? MergeOutcome::Kind::committed : MergeOutcome::Kind::conflicts;
    Plan plan = planOf(name, outcome.files);
    if (isClean) {
        outcome.commit = addMergeCommit(workingTree, hash, outcome.files, text);
        plan.branch = workingTree.repository().branch();
        plan.commit = outcome.commit->hash;
    } else {
        plan.recovery = Plan::Recovery::takeBack;
    }
    forgetStage(workingTree);
    notePlan(history, plan);
    const Expected<PlannedTimes> times = applyPlan(workingTree, plan, *sightings);
    if (!times)
        return takeBackAfter(workingTree, plan, times.error());
    const Expected<void> finished = isClean ? finish(workingTree, plan, *times)
                                            : recordConflicts(workingTree, outcome.files, hash);
    if (!finished)
        return finished.error();
    return outcome;
}

}  // namespace

Expected<void> checkNoMerge(WorkingTree& workingTree) {
    if (workingTree.repository().history().note(mergeNote).isEmpty() &&
        workingTree.repository().state().conflicts.empty())
        return {};
    return ErrorMessage{
        tr(L"A merge is going on: resolve its conflicts and commit it, or take it "
           L"back with qrv merge --abort")};
}

Expected<MergeOutcome> merge(WorkingTree& workingTree, const OdString& hash, const OdString& name,
                             const CommitText& text) {
    if (const Expected<void> none = checkNoMerge(workingTree); !none)
        return none.error();
    const OdString head = workingTree.repository().headCommit();
    if (!head.isEmpty() && workingTree.repository().history().buildsOn(head, hash))
        return MergeOutcome();
    const Expected<WorkingChanges> changes = findChanges(workingTree);
    if (!changes)
        return changes.error();
    if (const Expected<void> none = checkNothingStaged(workingTree, *changes); !none)
        return none.error();
    logEvent(OdString::format(L"merge of %ls into %ls", hash,
                              quotedName(workingTree.repository().branch())),
             workingTree.root(), workingTree.folder(), workingTree.caller());
    if (head.isEmpty() || workingTree.repository().history().buildsOn(hash, head))
        return goForward(workingTree, hash, name, *changes);
    return mergeThreeWays(workingTree, hash, name, *changes, text);
}

Expected<void> abortMerge(WorkingTree& workingTree, bool force) {
    if (const Expected<void> none = checkNoMerge(workingTree); none)
        return ErrorMessage{tr(L"No merge is going on")};
    const Expected<WorkingChanges> changes = findChanges(workingTree);
    if (!changes)
        return changes.error();
    // A file may be in both, and the steps are to be ordered.
    std::set<OdString> paths;
    for (const common::StagedFile& file : workingTree.repository().state().stagedFiles)
        paths.insert(file.path);
    for (const common::ConflictData& conflict : workingTree.repository().state().conflicts)
        paths.insert(conflict.path);
    const Expected<std::vector<PlannedFile>> steps =
        stepsToTree(workingTree, workingTree.repository().headFiles(), {paths.begin(), paths.end()},
                    *changes, force ? Unsaved::store : Unsaved::refuse);
    if (!steps)
        return steps.error();
    return takeBackMerge(workingTree, *steps, *changes);
}

}  // namespace qrv
