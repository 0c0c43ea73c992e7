#include <engine/journal/Application.h>
#include <engine/journal/Completion.h>
#include <engine/journal/Perform.h>
#include <engine/journal/Preconditions.h>
#include <engine/journal/Recovery.h>

namespace qrv {

Expected<void> carryOut(WorkingTree& workingTree, const Plan& plan, const WorkingChanges& changes) {
    const Expected<Sightings> sightings = lookBeforeBeginning(workingTree, plan.files, changes);
    if (!sightings)
        return sightings.error();
    notePlan(workingTree.repository().history(), plan);
    const Expected<PlannedTimes> times = applyPlan(workingTree, plan, *sightings);
    if (!times)
        return takeBackAfter(workingTree, plan, times.error());
    return finish(workingTree, plan, *times);
}

Expected<void> carryOutWithoutFiles(WorkingTree& workingTree, const Plan& plan) {
    notePlan(workingTree.repository().history(), plan);
    return finish(workingTree, plan, {});
}

Expected<void> takeBackMerge(WorkingTree& workingTree, const std::vector<PlannedFile>& steps,
                             const WorkingChanges& changes) {
    Plan plan;
    plan.title = L"merge";
    plan.recovery = Plan::Recovery::takeBack;
    plan.files = steps;
    const Expected<Sightings> sightings = lookBeforeBeginning(workingTree, plan.files, changes);
    if (!sightings)
        return sightings.error();
    notePlan(workingTree.repository().history(), reversed(plan));
    const Expected<PlannedTimes> times = applyPlan(workingTree, plan, *sightings);
    if (!times)
        return takeBackAfter(workingTree, plan, times.error());
    return finishTakingBack(workingTree, plan, *times);
}

}  // namespace qrv
