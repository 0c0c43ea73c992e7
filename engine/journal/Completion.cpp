#include <common/state/Index.h>
#include <common/state/Transaction.h>
#include <engine/journal/Completion.h>
#include <engine/tree/FileDelta.h>

#include <utility>

namespace qrv {

namespace {

void moveHeadFiles(WorkingTree& workingTree, const Plan& plan) {
    History& history = workingTree.repository().history();
    Tree files = history.tree(plan.commit);
    history.changeHeadFiles(deltasBetween(workingTree.repository().headFiles(), files));
    history.setNote(headNote, plan.commit);
    if (!plan.commit.isEmpty())
        history.setReference(plan.branch, common::RefType::Branch, plan.commit);
    workingTree.repository().setHeadFiles(std::move(files));
}

/// The library notes the time that a file has now. When that is not the one with which the file was
/// as planned, somebody has saved it since, and nothing is known of it.
void noteInIndex(WorkingTree& workingTree, const Plan& plan, const PlannedTimes& times) {
    const Tree& head = workingTree.repository().headFiles();
    common::Cache& cache = workingTree.repository().cache();
    for (const PlannedFile& step : plan.files) {
        const auto file = head.find(step.path);
        const auto time = times.find(step.path);
        if (step.after.isEmpty() || file == head.end() || time == times.end()) {
            common::removeIndex(step.path, cache);
            continue;
        }
        common::updateIndex(step.path, cache, workingTree.root(), file->second.url != step.after);
        if (cache.read().index.at(step.path).lastChecked != time->second)
            common::removeIndex(step.path, cache);
    }
}

}  // namespace

Expected<void> finishTakingBack(WorkingTree& workingTree, const Plan& plan,
                                const PlannedTimes& times) {
    noteInIndex(workingTree, plan, times);
    // Nothing of the state can be worth keeping: a merge, the one command whose plans are taken
    // back, begins without staged files and conflicts.
    common::State& state = workingTree.repository().cache().write();
    state.stagedFiles.clear();
    state.renames.clear();
    state.conflicts.clear();
    workingTree.repository().history().setNote(mergeNote, {});
    if (Expected<void> saved = workingTree.repository().saveState(); !saved)
        return saved;
    forgetPlan(workingTree.repository().history());
    return {};
}

Expected<void> finish(WorkingTree& workingTree, const Plan& plan, const PlannedTimes& times) {
    if (!plan.branch.isEmpty()) {
        DatabaseTransaction transaction(workingTree.repository().history().database());
        moveHeadFiles(workingTree, plan);
        transaction.commit();
    }
    common::Transaction transaction = workingTree.repository().cache().getTransaction();
    noteInIndex(workingTree, plan, times);
    if (!plan.branch.isEmpty())
        workingTree.repository().cache().write().head.reference = plan.branch;
    transaction.commit();
    if (Expected<void> saved = workingTree.repository().saveState(); !saved)
        return saved;
    forgetPlan(workingTree.repository().history());
    return {};
}

}  // namespace qrv
