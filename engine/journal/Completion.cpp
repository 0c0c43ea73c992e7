#include <common/state/Transaction.h>
#include <engine/base/SortedLookup.h>
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

/// The name was given after the stamp was taken, which counts as a change of the file, but not of
/// its contents.
bool hasSameContents(const sys::FileStamp& one, const sys::FileStamp& other) {
    return one.number == other.number && one.sizeBytes == other.sizeBytes &&
           one.modifiedNs == other.modifiedNs;
}

/// Files that were written just now are too young, which most are.
void noteApplied(WorkingTree& workingTree, const JournalEntry& entry, const AppliedStamps& stamps) {
    std::vector<NotedStamp> applied;
    for (const auto& [path, stamp] : stamps)
        applied.push_back({path, stamp});
    applied = safeStamps(std::move(applied), workingTree.folder());
    std::vector<NotedStamp> seen;
    for (const NotedStamp& noted : applied) {
        const TreeStep* const step = findSorted(
            entry.steps, [&](const TreeStep& each) { return each.path.text() <=> noted.path; });
        const sys::Outcome<sys::FileStamp> now = workingTree.folder().stamp(noted.path.toNarrow());
        if (step != nullptr && now && hasSameContents(*now, *noted.stamp) &&
            workingTree.repository().history().headUrl(noted.path) == step->after)
            seen.push_back({noted.path, *now});
    }
    workingTree.note(std::move(seen));
}

}  // namespace

Expected<void> completeRollBack(WorkingTree& workingTree, const JournalEntry& entry,
                                const AppliedStamps& stamps) {
    noteApplied(workingTree, entry, stamps);
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
                      const AppliedStamps& stamps) {
    if (!entry.branch.isEmpty()) {
        DatabaseTransaction transaction(workingTree.repository().history().database());
        moveHeadFiles(workingTree, entry);
        transaction.commit();
    }
    noteApplied(workingTree, entry, stamps);
    if (!entry.branch.isEmpty()) {
        common::Transaction transaction = workingTree.repository().cache().getTransaction();
        workingTree.repository().cache().write().head.reference = entry.branch;
        transaction.commit();
    }
    if (Expected<void> saved = workingTree.repository().saveState(); !saved)
        return saved;
    forgetEntry(workingTree.repository().history());
    return {};
}

}  // namespace qrv
