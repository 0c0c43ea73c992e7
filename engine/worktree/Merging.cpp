#include <common/state/Index.h>
#include <common/state/Transaction.h>
#include <engine/base/Translation.h>
#include <engine/repository/LogEntry.h>
#include <engine/tree/Shape.h>
#include <engine/worktree/Merging.h>
#include <engine/worktree/PlanChecks.h>
#include <engine/worktree/PlanExecution.h>
#include <engine/worktree/PlanExecutionInternal.h>
#include <engine/worktree/Saving.h>
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

Expected<void> checkNothingStaged(const Workspace& workspace, const WorkingChanges& changes) {
    if (stagedChanges(workspace.stateWithoutIndex(), changes).empty())
        return {};
    return ErrorMessage{
        tr(L"Commit the staged files first (qrv commit), or take them off the "
           L"stage (qrv unstage --all)")};
}

/// The library notes the conflict; what it is told of the change makes that of it.
Expected<void> noteConflict(Workspace& workspace, const MergeConflict& conflict) {
    const Host host;
    common::IoInterfaceRef io(host);
    const common::Versions<common::VersionedFile, common::VersionedFile> versions = {
        {conflict.path, conflict.localUrl}, {conflict.path, conflict.remoteUrl}};
    const Expected<bool> noted =
        workspace.storages()
            .ofUrl(conflict.remoteUrl)
            .inFileUpdate(workspace.root(), io, workspace.cache(), versions, conflict.remote);
    return noted ? Expected<void>() : noted.error();
}

Expected<void> recordConflicts(Workspace& workspace, const ThreeWayResult& files,
                               const OdString& hash) {
    common::Transaction transaction = workspace.cache().getTransaction();
    for (const MergeConflict& conflict : files.conflicts) {
        if (const Expected<void> noted = noteConflict(workspace, conflict); !noted)
            return noted.error();
        common::updateConflictData(workspace.cache(),
                                   common::ConflictData(conflict.path, conflict.remoteUrl,
                                                        conflict.local, conflict.remote));
    }
    common::State& state = workspace.cache().write();
    for (const PlannedFile& step : files.taken) {
        const FileChange change = step.after.isEmpty()    ? FileChange::removed
                                  : step.before.isEmpty() ? FileChange::added
                                                          : FileChange::modified;
        state.stagedFiles.emplace_back(step.path, change);
        if (change == FileChange::modified)
            common::updateIndex(step.path, workspace.cache(), workspace.root(), true);
        else
            common::removeIndex(step.path, workspace.cache());
    }
    transaction.commit();
    if (const Expected<void> saved = workspace.saveState(); !saved)
        return saved.error();
    DatabaseTransaction change(workspace.history().database());
    workspace.history().setNote(mergeNote, hash);
    forgetPlan(workspace.history());
    change.commit();
    return {};
}

std::vector<FileDelta> deltasOf(const ThreeWayResult& files) {
    std::vector<FileDelta> deltas;
    for (const PlannedFile& step : files.taken)
        deltas.push_back({step.path, step.after, {}, step.sizeBytes});
    return deltas;
}

CommitEntry addMergeCommit(Workspace& workspace, const OdString& hash, const ThreeWayResult& files,
                           const CommitText& text) {
    NewCommit commit;
    commit.parents = {workspace.headCommit(), hash};
    commit.author = text.author;
    commit.message = text.message;
    commit.timeSeconds = kernel::now() / millisecondsPerSecond;
    commit.deltas = deltasOf(files);
    DatabaseTransaction transaction(workspace.history().database());
    CommitEntry entry = workspace.history().add(commit);
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
void forgetStage(Workspace& workspace) {
    if (workspace.state().stagedFiles.empty() && workspace.state().renames.empty())
        return;
    common::State& state = workspace.cache().write();
    state.stagedFiles.clear();
    state.renames.clear();
}

Plan planOf(const OdString& name, const ThreeWayResult& files) {
    Plan plan;
    plan.title = OdString::format(tr(L"merge of '%ls'"), name);
    plan.files = files.taken;
    return plan;
}

Expected<MergeOutcome> goForward(Workspace& workspace, const OdString& hash, const OdString& name,
                                 const WorkingChanges& changes) {
    MergeOutcome outcome;
    outcome.kind = MergeOutcome::Kind::forward;
    const std::vector<PlannedFile> steps =
        stepsBetween(workspace.headFiles(), workspace.history().tree(hash));
    outcome.files.taken = steps;
    if (const Expected<void> unharmed = checkUnharmed(workspace, steps, changes); !unharmed)
        return unharmed.error();
    Plan plan = planOf(name, outcome.files);
    plan.branch = workspace.branch();
    plan.commit = hash;
    forgetStage(workspace);
    if (const Expected<void> done = carryOut(workspace, plan, changes); !done)
        return done.error();
    outcome.commit = workspace.history().commit(hash);
    return outcome;
}

Expected<MergeOutcome> mergeThreeWays(Workspace& workspace, const OdString& hash,
                                      const OdString& name, const WorkingChanges& changes,
                                      const CommitText& text) {
    History& history = workspace.history();
    const std::optional<OdString> base = history.mergeBase(workspace.headCommit(), hash);
    MergeOutcome outcome;
    outcome.files = compareThreeWays(history.tree(base.value_or(OdString())), workspace.headFiles(),
                                     history.tree(hash));
    if (const Expected<void> unharmed =
            checkUnharmed(workspace, touchedFiles(outcome.files), changes);
        !unharmed)
        return unharmed.error();

    if (const Expected<void> possible = checkShape(workspace.headFiles(), deltasOf(outcome.files));
        !possible)
        return possible.error();

    const Expected<Sightings> sightings =
        lookBeforeBeginning(workspace, outcome.files.taken, changes);
    if (!sightings)
        return sightings.error();

    const bool isClean = outcome.files.conflicts.empty();
    outcome.kind = isClean ? MergeOutcome::Kind::committed : MergeOutcome::Kind::conflicts;
    Plan plan = planOf(name, outcome.files);
    if (isClean) {
        outcome.commit = addMergeCommit(workspace, hash, outcome.files, text);
        plan.branch = workspace.branch();
        plan.commit = outcome.commit->hash;
    } else {
        plan.recovery = Plan::Recovery::takeBack;
    }
    forgetStage(workspace);
    notePlan(history, plan);
    const Expected<PlannedTimes> times = applyPlan(workspace, plan, *sightings);
    if (!times)
        return takeBackAfter(workspace, plan, times.error());
    const Expected<void> finished =
        isClean ? finish(workspace, plan, *times) : recordConflicts(workspace, outcome.files, hash);
    if (!finished)
        return finished.error();
    return outcome;
}

}  // namespace

Expected<void> checkNoMerge(Workspace& workspace) {
    if (workspace.history().note(mergeNote).isEmpty() && workspace.state().conflicts.empty())
        return {};
    return ErrorMessage{
        tr(L"A merge is going on: resolve its conflicts and commit it, or take it "
           L"back with qrv merge --abort")};
}

Expected<MergeOutcome> merge(Workspace& workspace, const OdString& hash, const OdString& name,
                             const CommitText& text) {
    if (const Expected<void> none = checkNoMerge(workspace); !none)
        return none.error();
    const OdString head = workspace.headCommit();
    if (!head.isEmpty() && workspace.history().buildsOn(head, hash))
        return MergeOutcome();
    const Expected<WorkingChanges> changes = findChanges(workspace);
    if (!changes)
        return changes.error();
    if (const Expected<void> none = checkNothingStaged(workspace, *changes); !none)
        return none.error();
    logEvent(OdString::format(L"merge of %ls into %ls", hash, quotedName(workspace.branch())),
             workspace.root(), workspace.folder(), workspace.caller());
    if (head.isEmpty() || workspace.history().buildsOn(hash, head))
        return goForward(workspace, hash, name, *changes);
    return mergeThreeWays(workspace, hash, name, *changes, text);
}

Expected<void> abortMerge(Workspace& workspace, bool force) {
    if (const Expected<void> none = checkNoMerge(workspace); none)
        return ErrorMessage{tr(L"No merge is going on")};
    const Expected<WorkingChanges> changes = findChanges(workspace);
    if (!changes)
        return changes.error();
    // A file may be in both, and the steps are to be ordered.
    std::set<OdString> paths;
    for (const common::StagedFile& file : workspace.state().stagedFiles)
        paths.insert(file.path);
    for (const common::ConflictData& conflict : workspace.state().conflicts)
        paths.insert(conflict.path);
    const Expected<std::vector<PlannedFile>> steps =
        stepsToTree(workspace, workspace.headFiles(), {paths.begin(), paths.end()}, *changes,
                    force ? Unsaved::store : Unsaved::refuse);
    if (!steps)
        return steps.error();
    return takeBackMerge(workspace, *steps, *changes);
}

}  // namespace qrv
