#include <engine/journal/Application.h>
#include <engine/journal/Completion.h>
#include <engine/journal/Perform.h>
#include <engine/journal/Preconditions.h>
#include <engine/journal/Recovery.h>

namespace qrv {

Expected<void> perform(WorkingTree& workingTree, const JournalEntry& entry,
                       const WorkingChanges& changes) {
    const Expected<Sightings> sightings = checkPreconditions(workingTree, entry.steps, changes);
    if (!sightings)
        return sightings.error();
    noteEntry(workingTree.repository().history(), entry);
    const Expected<AppliedStamps> stamps = applyAll(workingTree, entry, *sightings);
    if (!stamps)
        return rollBackAfter(workingTree, entry, stamps.error());
    return finish(workingTree, entry, *stamps);
}

Expected<void> performWithoutFiles(WorkingTree& workingTree, const JournalEntry& entry) {
    noteEntry(workingTree.repository().history(), entry);
    return finish(workingTree, entry, {});
}

Expected<void> rollBackMerge(WorkingTree& workingTree, const std::vector<TreeStep>& steps,
                             const WorkingChanges& changes) {
    JournalEntry entry;
    entry.title = L"merge";
    entry.recovery = JournalEntry::Recovery::rollBack;
    entry.steps = steps;
    const Expected<Sightings> sightings = checkPreconditions(workingTree, entry.steps, changes);
    if (!sightings)
        return sightings.error();
    noteEntry(workingTree.repository().history(), reversed(entry));
    const Expected<AppliedStamps> stamps = applyAll(workingTree, entry, *sightings);
    if (!stamps)
        return rollBackAfter(workingTree, entry, stamps.error());
    return completeRollBack(workingTree, entry, *stamps);
}

}  // namespace qrv
