#include <common/state/Index.h>
#include <common/state/Transaction.h>
#include <engine/journal/Completion.h>
#include <engine/tree/FileDelta.h>

#include <utility>

namespace qrv {

namespace {

void moveHeadFiles(WorkingTree& workingTree, const JournalEntry& entry) {
    History& history = workingTree.repository().history();
    history.changeHeadFiles(deltasOf(history.difference(history.note(headNote), entry.commit)));
    history.setNote(headNote, entry.commit);
    if (!entry.commit.isEmpty())
        history.setReference(entry.branch, common::RefType::Branch, entry.commit);
    workingTree.repository().forgetHeadFiles();
}

/// The library notes the time that a file has now. When that is not the one with which the file was
/// as planned, somebody has saved it since, and nothing is known of it.
void noteInIndex(WorkingTree& workingTree, const JournalEntry& entry, const AppliedTimes& times) {
    History& history = workingTree.repository().history();
    common::Cache& cache = workingTree.repository().cache();
    for (const TreeStep& step : entry.steps) {
        const OdString url = history.headUrl(step.path);
        const auto time = times.find(step.path);
        if (step.after.isEmpty() || url.isEmpty() || time == times.end()) {
            common::removeIndex(step.path, cache);
            continue;
        }
        common::updateIndex(step.path, cache, workingTree.root(), url != step.after);
        if (cache.read().index.at(step.path).lastChecked != time->second)
            common::removeIndex(step.path, cache);
    }
}

}  // namespace

Expected<void> completeRollBack(WorkingTree& workingTree, const JournalEntry& entry,
                                const AppliedTimes& times) {
    noteInIndex(workingTree, entry, times);
    // Nothing of the state can be worth keeping: a merge, the one command whose entries are taken
    // back, begins without staged files and conflicts.
    common::State& state = workingTree.repository().cache().write();
    state.stagedFiles.clear();
    state.renames.clear();
    state.conflicts.clear();
    workingTree.repository().history().setNote(mergeNote, {});
    if (Expected<void> saved = workingTree.repository().saveState(); !saved)
        return saved;
    forgetEntry(workingTree.repository().history());
    return {};
}

Expected<void> finish(WorkingTree& workingTree, const JournalEntry& entry,
                      const AppliedTimes& times) {
    if (!entry.branch.isEmpty()) {
        DatabaseTransaction transaction(workingTree.repository().history().database());
        moveHeadFiles(workingTree, entry);
        transaction.commit();
    }
    common::Transaction transaction = workingTree.repository().cache().getTransaction();
    noteInIndex(workingTree, entry, times);
    if (!entry.branch.isEmpty())
        workingTree.repository().cache().write().head.reference = entry.branch;
    transaction.commit();
    if (Expected<void> saved = workingTree.repository().saveState(); !saved)
        return saved;
    forgetEntry(workingTree.repository().history());
    return {};
}

}  // namespace qrv
