#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/journal/Application.h>
#include <engine/journal/Completion.h>
#include <engine/journal/Leftovers.h>
#include <engine/journal/Recovery.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/worktree/FileDigest.h>

#include <optional>
#include <utility>
#include <vector>

namespace qrv {

namespace {

/// What lies under a path while an entry is half done.
struct Found {
    /// Empty when nothing lies there, or a folder.
    OdString digest;
    std::optional<sys::FileStamp> version;
    /// A link, a pipe, or a file that changes at this moment: nothing that an entry makes.
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

/// What is still to be done of an entry.
struct Rest {
    std::vector<const TreeStep*> steps;
    /// Of files that are as planned already.
    AppliedStamps stamps;
};

/// Of an entry the removals, or what is to be written; both in their order, one after the other:
/// where two names are one, the removal of one decides what lies under the other. Removals that are
/// done already are repeated, for they remove the folders that were made for files which did not
/// come. Names the files that are neither as before nor as planned.
Expected<Rest> restOf(WorkingTree& workingTree, const JournalEntry& entry, bool isRemoval) {
    Rest rest;
    const std::unique_ptr<Work> progress =
        workingTree.caller().beginWork(tr(L"Comparing"), entry.steps.size());
    for (const TreeStep& step : entry.steps) {
        progress->add(step.sizeBytes);
        if (step.after.isEmpty() != isRemoval)
            continue;
        const Expected<Found> found = findFile(workingTree, step.path);
        if (!found)
            return found.error();
        const bool isDone = !found->isForeign && found->digest == digestOfUrl(step.after);
        const bool isBefore = !found->isForeign && found->digest == digestOfUrl(step.before);
        if (isDone && !isRemoval)
            rest.stamps.emplace(step.path, *found->version);
        else if (isDone || isBefore)
            rest.steps.push_back(&step);
        else
            tellLeft(step.path, workingTree.caller());
    }
    return rest;
}

/// Does what is still to be done, whatever a process that ended, or a failure, has left.
Expected<AppliedStamps> applyRest(WorkingTree& workingTree, const JournalEntry& entry) {
    if (const Expected<void> settled = settleLeftovers(workingTree, entry); !settled)
        return settled.error();
    AppliedStamps stamps;
    for (const bool isRemoval : {true, false}) {
        Expected<Rest> rest = restOf(workingTree, entry, isRemoval);
        if (!rest)
            return rest.error();
        Expected<AppliedStamps> written =
            applySteps(workingTree, entry, rest->steps, {}, Unexpected::leave);
        if (!written)
            return written.error();
        stamps.merge(rest->stamps);
        stamps.merge(*written);
    }
    return stamps;
}

Expected<void> finishOrRollBack(WorkingTree& workingTree, const JournalEntry& entry) {
    const bool finishes = entry.recovery == JournalEntry::Recovery::finish;
    const JournalEntry rest = finishes ? entry : reversed(entry);
    if (Expected<void> free = checkNotInUse(workingTree, rest.steps); !free)
        return free;
    const Expected<AppliedStamps> stamps = applyRest(workingTree, rest);
    if (!stamps)
        return stamps.error();
    return finishes ? finish(workingTree, rest, *stamps)
                    : completeRollBack(workingTree, rest, *stamps);
}

}  // namespace

ErrorMessage rollBackAfter(WorkingTree& workingTree, const JournalEntry& entry,
                           const ErrorMessage& failure) {
    if (const Expected<AppliedStamps> done = applyRest(workingTree, reversed(entry)); !done) {
        workingTree.caller().note(done.error().message);
        workingTree.caller().note(entry.recovery == JournalEntry::Recovery::finish
                                      ? tr(L"Note: the next command tries again to finish this")
                                      : tr(L"Note: the next command takes back what was done"));
        return failure;
    }
    forgetEntry(workingTree.repository().history());
    return failure;
}

Expected<void> recover(WorkingTree& workingTree) {
    const std::optional<JournalEntry> entry = notedEntry(workingTree.repository().history());
    if (!entry)
        return {};
    const bool isFinished = entry->recovery == JournalEntry::Recovery::finish;
    // It may take long, and is not what the person asked for now.
    workingTree.caller().note(
        OdString::format(isFinished ? tr(L"Note: '%ls' was interrupted; it is being finished")
                                    : tr(L"Note: '%ls' was interrupted; it is being taken back"),
                         printable(entry->title)));
    if (const Expected<void> done = finishOrRollBack(workingTree, *entry); !done)
        return ErrorMessage{OdString::format(
            tr(L"'%ls' was interrupted, and what it left cannot be put in order yet. Nothing is "
               L"lost, and the next command tries again once this is mended: %ls"),
            printable(entry->title), done.error().message)};
    workingTree.caller().note(
        OdString::format(isFinished ? tr(L"Note: '%ls' was interrupted and is now finished")
                                    : tr(L"Note: '%ls' was interrupted and is taken back"),
                         printable(entry->title)));
    return {};
}

}  // namespace qrv
