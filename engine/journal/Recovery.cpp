#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/journal/Application.h>
#include <engine/journal/Completion.h>
#include <engine/journal/Leftovers.h>
#include <engine/journal/Recovery.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/worktree/FileDigest.h>
#include <engine/worktree/Ticks.h>

#include <optional>
#include <utility>
#include <vector>

namespace qrv {

namespace {

/// What lies under a path while a plan is half done.
struct Found {
    /// Empty when nothing lies there, or a folder.
    OdString digest;
    std::optional<sys::FileStamp> version;
    /// A link, a pipe, or a file that changes at this moment: nothing that a plan makes.
    bool isForeign = false;
};

Expected<Found> findFile(const WorkingTree& workingTree, const OdString& path) {
    const sys::Outcome<sys::InputFile> file = workingTree.folder().openFile(path.toNarrow());
    if (!file) {
        const std::error_code error = file.error();
        if (sys::meansAbsent(error) || error == std::errc::is_a_directory)
            return Found();
        if (error == std::errc::too_many_symbolic_link_levels ||
            error == std::errc::operation_not_supported)
            return Found{.digest = {}, .version = std::nullopt, .isForeign = true};
        return systemFailure(tr(L"'%ls' cannot be read: %ls"), path, error);
    }
    const sys::Outcome<sys::FileStamp> before = file->stamp();
    const Expected<OdString> digest = digestOfFile(workingTree.folder(), path);
    if (!digest)
        return digest.error();
    const sys::Outcome<sys::FileStamp> after = file->stamp();
    if (!before || !after)
        return systemFailure(tr(L"'%ls' cannot be read: %ls"), path,
                             before ? after.error() : before.error());
    return Found{.digest = *digest, .version = *before, .isForeign = *before != *after};
}

/// What is still to be done of a plan.
struct Rest {
    std::vector<const PlannedFile*> steps;
    /// Of files that are as planned already.
    PlannedTimes times;
};

/// Of a plan the removals, or what is to be written; both in their order, one after the other:
/// where two names are one, the removal of one decides what lies under the other. Removals that are
/// done already are repeated, for they remove the folders that were made for files which did not
/// come. Names the files that are neither as before nor as planned.
Expected<Rest> restOf(WorkingTree& workingTree, const Plan& plan, bool isRemoval) {
    Rest rest;
    const std::unique_ptr<Work> progress =
        workingTree.caller().beginWork(tr(L"Comparing"), plan.files.size());
    for (const PlannedFile& step : plan.files) {
        progress->add(step.sizeBytes);
        if (step.after.isEmpty() != isRemoval)
            continue;
        const Expected<Found> found = findFile(workingTree, step.path);
        if (!found)
            return found.error();
        const bool isDone = !found->isForeign && found->digest == digestOfUrl(step.after);
        const bool isBefore = !found->isForeign && found->digest == digestOfUrl(step.before);
        if (isDone && !isRemoval)
            rest.times.emplace(step.path, toTicks(found->version->modifiedNs));
        else if (isDone || isBefore)
            rest.steps.push_back(&step);
        else
            tellLeft(step.path, workingTree.caller());
    }
    return rest;
}

/// Does what is still to be done, whatever a process that ended, or a failure, has left.
Expected<PlannedTimes> applyRest(WorkingTree& workingTree, const Plan& plan) {
    if (const Expected<void> settled = settleLeftovers(workingTree, plan); !settled)
        return settled.error();
    PlannedTimes times;
    for (const bool isRemoval : {true, false}) {
        Expected<Rest> rest = restOf(workingTree, plan, isRemoval);
        if (!rest)
            return rest.error();
        Expected<PlannedTimes> written =
            applySteps(workingTree, plan, rest->steps, {}, Unexpected::leave);
        if (!written)
            return written.error();
        times.merge(rest->times);
        times.merge(*written);
    }
    return times;
}

Expected<void> finishOrTakeBack(WorkingTree& workingTree, const Plan& plan) {
    const bool finishes = plan.recovery == Plan::Recovery::finish;
    const Plan rest = finishes ? plan : reversed(plan);
    if (Expected<void> free = checkNotInUse(workingTree, rest.files); !free)
        return free;
    const Expected<PlannedTimes> times = applyRest(workingTree, rest);
    if (!times)
        return times.error();
    return finishes ? finish(workingTree, rest, *times)
                    : finishTakingBack(workingTree, rest, *times);
}

}  // namespace

ErrorMessage takeBackAfter(WorkingTree& workingTree, const Plan& plan,
                           const ErrorMessage& failure) {
    if (const Expected<PlannedTimes> done = applyRest(workingTree, reversed(plan)); !done) {
        workingTree.caller().note(done.error().message);
        workingTree.caller().note(plan.recovery == Plan::Recovery::finish
                                      ? tr(L"Note: the next command tries again to finish this")
                                      : tr(L"Note: the next command takes back what was done"));
        return failure;
    }
    forgetPlan(workingTree.repository().history());
    return failure;
}

Expected<void> recover(WorkingTree& workingTree) {
    const std::optional<Plan> plan = notedPlan(workingTree.repository().history());
    if (!plan)
        return {};
    const bool isFinished = plan->recovery == Plan::Recovery::finish;
    // It may take long, and is not what the person asked for now.
    workingTree.caller().note(
        OdString::format(isFinished ? tr(L"Note: '%ls' was interrupted; it is being finished")
                                    : tr(L"Note: '%ls' was interrupted; it is being taken back"),
                         printable(plan->title)));
    if (const Expected<void> done = finishOrTakeBack(workingTree, *plan); !done)
        return ErrorMessage{OdString::format(
            tr(L"'%ls' was interrupted, and what it left cannot be put in order yet. Nothing is "
               L"lost, and the next command tries again once this is mended: %ls"),
            printable(plan->title), done.error().message)};
    workingTree.caller().note(
        OdString::format(isFinished ? tr(L"Note: '%ls' was interrupted and is now finished")
                                    : tr(L"Note: '%ls' was interrupted and is taken back"),
                         printable(plan->title)));
    return {};
}

}  // namespace qrv
