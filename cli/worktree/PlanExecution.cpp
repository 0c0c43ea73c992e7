#include <cli/Message.h>
#include <cli/Translation.h>
#include <cli/safety/RelativePath.h>
#include <cli/safety/StorageUrlCheck.h>
#include <cli/terminal/Progress.h>
#include <cli/worktree/Merging.h>
#include <cli/worktree/PlanExecution.h>
#include <cli/worktree/PlanExecutionInternal.h>
#include <cli/worktree/WorkingFile.h>
#include <common/state/Index.h>
#include <common/state/Transaction.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <iterator>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>

namespace qrv_cli {

namespace {

/// New files that are open at the same time; the system allows a process some hundreds.
constexpr std::size_t filesAtOnce = 200;

Plan reversed(Plan plan) {
    for (PlannedFile& step : plan.files)
        std::swap(step.before, step.after);
    return plan;
}

/// All contents are on the disk before the first file changes.
Expected<void> writeFiles(Workspace& workspace, std::span<const PlannedFile* const> steps,
                          Progress& progress) {
    std::vector<sys::NewFile> files;
    files.reserve(steps.size());
    for (const PlannedFile* step : steps) {
        const Expected<RelativePath> path = RelativePath::check(step->path);
        if (!path)
            return path.error();
        Expected<sys::NewFile> file =
            workspace.storages().ofUrl(step->after).prepare(workspace.root(), step->after, *path);
        if (!file)
            return file.error();
        files.push_back(std::move(*file));
        progress.add(step->sizeBytes);
    }
    if (Expected<void> flushed = flushWorkingFiles(workspace); !flushed)
        return flushed;
    for (std::size_t index = 0; index < files.size(); ++index) {
        if (const std::error_code error = files[index].publish(sys::NewFile::Existing::replace))
            return systemFailure(tr(L"'%ls' cannot be written: %ls"), steps[index]->path, error);
    }
    return {};
}

/// Removes first, so that a file can take the place of a folder and the other way round. What is
/// removed is in the storage.
Expected<void> applySteps(Workspace& workspace, const std::vector<const PlannedFile*>& steps) {
    std::vector<const PlannedFile*> written;
    for (const PlannedFile* step : steps) {
        if (!step->after.isEmpty())
            written.push_back(step);
        else if (Expected<void> removed = removeWorkingFile(workspace, step->path); !removed)
            return removed;
    }
    Progress progress(tr(L"Writing"), written.size());
    for (std::size_t begin = 0; begin < written.size(); begin += filesAtOnce) {
        const std::size_t count = std::min(filesAtOnce, written.size() - begin);
        const std::span<const PlannedFile* const> part(written.data() + begin, count);
        if (Expected<void> done = writeFiles(workspace, part, progress); !done)
            return done;
    }
    // The names, too: the plan is forgotten for good soon.
    return flushWorkingFiles(workspace);
}

std::vector<const PlannedFile*> allOf(const Plan& plan) {
    std::vector<const PlannedFile*> steps;
    for (const PlannedFile& step : plan.files)
        steps.push_back(&step);
    return steps;
}

OdString digestOfUrl(const OdString& url) {
    const Expected<CheckedUrl> checked = CheckedUrl::check(url);
    return checked ? checked->digest() : OdString();
}

/// The steps that are still to be done, and removals that are done already: repeated, they remove
/// the folders that were made for files which did not come. Names those whose file is neither as
/// before nor as planned.
std::vector<const PlannedFile*> unfinishedSteps(const Workspace& workspace, const Plan& plan) {
    std::vector<const PlannedFile*> steps;
    Progress progress(tr(L"Comparing"), plan.files.size());
    for (const PlannedFile& step : plan.files) {
        progress.add(step.sizeBytes);
        const Expected<OdString> digest = digestOfFile(workspace.folder(), step.path);
        const bool isDone = digest && *digest == digestOfUrl(step.after);
        if (isDone && !step.after.isEmpty())
            continue;
        if (isDone || (digest && *digest == digestOfUrl(step.before)))
            steps.push_back(&step);
        else
            printMessage(OdString::format(
                tr(L"Note: '%ls' was changed by somebody meanwhile and is left as it is"),
                printable(step.path)));
    }
    return steps;
}

/// The process that began the plan is dead: this one holds its lock. So are the files that it was
/// about to publish, which the scan would list.
void removeLeftovers(const Workspace& workspace, const Plan& plan) {
    std::set<std::string> folders;
    for (const PlannedFile& step : plan.files) {
        const int slash = step.path.reverseFind(L'/');
        folders.insert(slash < 0 ? "." : step.path.left(slash).toNarrow());
    }
    for (const std::string& folder : folders)
        workspace.folder().removeLeftovers(folder, std::chrono::seconds(0));
}

std::vector<FileDelta> headDeltas(const Tree& before, const Tree& after) {
    std::vector<FileDelta> deltas;
    for (const PlannedFile& step : stepsBetween(before, after))
        deltas.push_back({step.path, step.after, {}, step.sizeBytes});
    return deltas;
}

void moveHeadFiles(Workspace& workspace, const Plan& plan) {
    History& history = workspace.history();
    history.changeHeadFiles(headDeltas(history.headFiles(), history.tree(plan.commit)));
    history.setNote(headNote, plan.commit);
    if (!plan.commit.isEmpty())
        history.setReference(plan.branch, common::RefType::Branch, plan.commit);
    workspace.forgetHeadFiles();
}

void noteInIndex(Workspace& workspace, const Plan& plan) {
    const Tree& head = workspace.headFiles();
    common::Cache& cache = workspace.cache();
    for (const PlannedFile& step : plan.files) {
        const auto file = head.find(step.path);
        if (step.after.isEmpty() || file == head.end())
            common::removeIndex(step.path, cache);
        else
            common::updateIndex(step.path, cache, workspace.root(), file->second.url != step.after);
    }
}

/// What follows when the working files are as before the merge. Nothing of the state can be worth
/// keeping: a merge, the one command whose plans are taken back, begins without staged files and
/// conflicts.
Expected<void> finishTakingBack(Workspace& workspace, const Plan& plan) {
    noteInIndex(workspace, plan);
    common::State& state = workspace.cache().write();
    state.stagedFiles.clear();
    state.renames.clear();
    state.conflicts.clear();
    workspace.history().setNote(mergeNote, {});
    if (Expected<void> saved = workspace.saveState(); !saved)
        return saved;
    forgetPlan(workspace.history());
    return {};
}

bool holds(const std::vector<OdString>& sorted, const OdString& path) {
    return std::binary_search(sorted.begin(), sorted.end(), path);
}

/// What stays where it is: present, and removed by no step.
std::vector<OdString> stayingFiles(const std::vector<PlannedFile>& steps,
                                   const std::vector<OdString>& present) {
    std::vector<OdString> removed;
    for (const PlannedFile& step : steps) {
        if (step.after.isEmpty())
            removed.push_back(step.path);
    }
    std::vector<OdString> staying;
    std::set_difference(present.begin(), present.end(), removed.begin(), removed.end(),
                        std::back_inserter(staying));
    return staying;
}

/// Whether a file of `staying` lies where the new file needs a folder, or below its name.
bool isBlocked(const OdString& path, const std::vector<OdString>& staying) {
    for (int slash = path.find(L'/'); slash >= 0; slash = path.find(L'/', slash + 1)) {
        if (holds(staying, path.left(slash)))
            return true;
    }
    const OdString folder = path + L'/';
    const auto first = std::lower_bound(staying.begin(), staying.end(), folder);
    return first != staying.end() && first->left(folder.getLength()) == folder;
}

/// Whether something lies there that the scan does not count: a link, also in place of a folder, or
/// a file that the ignore rules hide. It is in no commit.
bool isUnknownFile(const Workspace& workspace, const OdString& path,
                   const std::vector<OdString>& present) {
    if (holds(present, path))
        return false;
    const sys::Outcome<sys::FileStatus> status = workspace.folder().status(path.toNarrow());
    if (!status)
        return status.error() == std::errc::too_many_symbolic_link_levels;
    return status->kind != sys::FileKind::folder;
}

ErrorMessage listed(const OdString& heading, const std::vector<OdString>& paths) {
    OdString list;
    for (const OdString& path : paths)
        list += L"\n  " + printable(path);
    return {heading + list};
}

}  // namespace

Expected<void> flushWorkingFiles(const Workspace& workspace) {
    if (const std::error_code error = workspace.folder().flushFileSystem())
        return systemFailure(tr(L"The files of '%ls' cannot be written: %ls"),
                             workspace.root().path(), error);
    return {};
}

Expected<void> removeWorkingFile(const Workspace& workspace, const OdString& path) {
    const Expected<RelativePath> safe = RelativePath::check(path);
    if (!safe)
        return safe.error();
    const std::error_code error = workspace.folder().removeFile(safe->bytes());
    const bool isGone = error == std::errc::no_such_file_or_directory ||
                        error == std::errc::not_a_directory || error == std::errc::is_a_directory;
    if (error && !isGone)
        return systemFailure(tr(L"'%ls' cannot be removed: %ls"), path, error);
    workspace.folder().removeEmptyParents(safe->bytes());
    return {};
}

Expected<void> finish(Workspace& workspace, const Plan& plan) {
    if (!plan.branch.isEmpty()) {
        DatabaseTransaction transaction(workspace.history().database());
        moveHeadFiles(workspace, plan);
        transaction.commit();
    }
    common::Transaction transaction = workspace.cache().getTransaction();
    noteInIndex(workspace, plan);
    if (!plan.branch.isEmpty())
        workspace.cache().write().head.reference = plan.branch;
    transaction.commit();
    if (Expected<void> saved = workspace.saveState(); !saved)
        return saved;
    forgetPlan(workspace.history());
    return {};
}

Expected<void> takeBackAfter(Workspace& workspace, const Plan& plan, const ErrorMessage& failure) {
    const Plan back = reversed(plan);
    if (const Expected<void> done = applySteps(workspace, unfinishedSteps(workspace, back));
        !done) {
        printMessage(done.error().message);
        printMessage(plan.recovery == Plan::Recovery::finish
                         ? tr(L"Note: the next command tries again to finish this")
                         : tr(L"Note: the next command takes back what was done"));
        return failure;
    }
    forgetPlan(workspace.history());
    return failure;
}

std::vector<PlannedFile> stepsBetween(const Tree& before, const Tree& after) {
    std::vector<PlannedFile> steps;
    auto old = before.begin();
    for (const auto& [path, file] : after) {
        for (; old != before.end() && old->first < path; ++old)
            steps.push_back({old->first, old->second.url, {}, 0});
        const bool isOld = old != before.end() && old->first == path;
        if (!isOld || old->second.url != file.url)
            steps.push_back({path, isOld ? old->second.url : OdString(), file.url, file.sizeBytes});
        if (isOld)
            ++old;
    }
    for (; old != before.end(); ++old)
        steps.push_back({old->first, old->second.url, {}, 0});
    return steps;
}

Expected<void> checkRoom(const Workspace& workspace, const std::vector<PlannedFile>& steps,
                         const WorkingChanges& changes) {
    const std::vector<OdString> present = presentFiles(changes);
    const std::vector<OdString> staying = stayingFiles(steps, present);
    std::vector<OdString> blocked;
    for (const PlannedFile& step : steps) {
        const bool needsRoom = !step.after.isEmpty() && isBlocked(step.path, staying);
        if (needsRoom || isUnknownFile(workspace, step.path, present))
            blocked.push_back(step.path);
    }
    if (blocked.empty())
        return {};
    return listed(tr(L"These files have no room, because something that is in no commit has their "
                     L"name or that of a folder above them:"),
                  blocked);
}

Expected<void> checkUnharmed(const Workspace& workspace, const std::vector<PlannedFile>& steps,
                             const WorkingChanges& changes) {
    std::vector<OdString> harmed;
    for (const PlannedFile& step : steps) {
        if (changeOf(step.path, changes) != common::FileChange::unchanged)
            harmed.push_back(step.path);
    }
    if (!harmed.empty())
        return listed(tr(L"These files have changes that are not committed:"), harmed);
    return checkRoom(workspace, steps, changes);
}

Expected<void> carryOut(Workspace& workspace, const Plan& plan) {
    notePlan(workspace.history(), plan);
    if (const Expected<void> done = applySteps(workspace, allOf(plan)); !done)
        return takeBackAfter(workspace, plan, done.error());
    return finish(workspace, plan);
}

Expected<void> takeBackMerge(Workspace& workspace, const std::vector<PlannedFile>& steps) {
    Plan plan;
    plan.title = L"merge";
    plan.recovery = Plan::Recovery::takeBack;
    plan.files = steps;
    notePlan(workspace.history(), reversed(plan));
    if (const Expected<void> done = applySteps(workspace, allOf(plan)); !done)
        return takeBackAfter(workspace, plan, done.error());
    return finishTakingBack(workspace, plan);
}

Expected<void> recover(Workspace& workspace) {
    const std::optional<Plan> plan = notedPlan(workspace.history());
    if (!plan)
        return {};
    if (!workspace.mayChange()) {
        printMessage(OdString::format(
            tr(L"Note: '%ls' was interrupted, or is being done now by another process"),
            printable(plan->title)));
        return {};
    }
    const bool finishes = plan->recovery == Plan::Recovery::finish;
    const Plan rest = finishes ? *plan : reversed(*plan);
    // It may take long, and is not what the person asked for now.
    printMessage(OdString::format(finishes
                                      ? tr(L"Note: '%ls' was interrupted; it is being finished")
                                      : tr(L"Note: '%ls' was interrupted; it is being taken back"),
                                  printable(plan->title)));
    removeLeftovers(workspace, *plan);
    if (Expected<void> done = applySteps(workspace, unfinishedSteps(workspace, rest)); !done)
        return done;
    if (Expected<void> done =
            finishes ? finish(workspace, rest) : finishTakingBack(workspace, rest);
        !done)
        return done;
    printMessage(OdString::format(finishes ? tr(L"Note: '%ls' was interrupted and is now finished")
                                           : tr(L"Note: '%ls' was interrupted and is taken back"),
                                  printable(plan->title)));
    return {};
}

}  // namespace qrv_cli
