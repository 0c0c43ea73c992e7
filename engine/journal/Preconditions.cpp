#include <engine/base/SortedLookup.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/journal/Preconditions.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/storage/Age.h>
#include <engine/tree/Shape.h>
#include <engine/worktree/FileDigest.h>
#include <engine/worktree/FoldedName.h>
#include <engine/worktree/NamesAlike.h>
#include <engine/worktree/OpenDrawings.h>
#include <engine/worktree/PathList.h>
#include <engine/worktree/StatusByFolder.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace qrv {

namespace {

/// Tells of a path whether a step removes the file there.
std::function<bool(const OdString&)> removedBy(const std::vector<TreeStep>& steps) {
    return [&steps](const OdString& path) {
        const TreeStep* const step =
            findSorted(steps, [&path](const TreeStep& each) { return each.path.text() <=> path; });
        return step != nullptr && step->after.isEmpty();
    };
}

/// The paths of everything below that is no folder; a folder that nobody can look into may hold
/// anything.
std::vector<OdString> filesBelow(const OdString& path, const sys::Folder& root) {
    std::vector<OdString> files;
    std::vector<OdString> pending = {path};
    while (!pending.empty()) {
        const OdString folder = std::move(pending.back());
        pending.pop_back();
        const sys::Outcome<std::vector<std::string>> names = root.list(folder.toNarrow());
        if (!names && !meansNoFile(names.error()))
            files.push_back(folder);
        for (const std::string& name : names ? *names : std::vector<std::string>()) {
            OdString below = folder + L'/' + OdString::fromNarrow(name);
            const sys::Outcome<sys::FileStatus> status = root.status(below.toNarrow());
            const bool isFolder = status && status->kind == sys::FileKind::folder;
            (isFolder ? pending : files).push_back(std::move(below));
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

/// Answers for everything that lies on the disk and is no folder, known or not.
FileQuestions questionsOfDisk(const sys::Folder& root) {
    const auto statusOf = [&root](const OdString& path) { return root.status(path.toNarrow()); };
    const auto isFile = [statusOf](const OdString& path) {
        const sys::Outcome<sys::FileStatus> status = statusOf(path);
        return status && status->kind != sys::FileKind::folder;
    };
    const auto below = [statusOf, &root](const OdString& path) {
        const sys::Outcome<sys::FileStatus> status = statusOf(path);
        return status && status->kind == sys::FileKind::folder ? filesBelow(path, root)
                                                               : std::vector<OdString>();
    };
    return {isFile, below};
}

/// Whether something lies there that the scan does not count: a link, also in place of a folder, or
/// a file that the ignore rules hide. It is in no commit.
bool isUnknownFile(const WorkingTree& workingTree, const OdString& path,
                   const WorkingChanges& changes) {
    if (isPresent(path, changes))
        return false;
    const sys::Outcome<sys::FileStatus> status = workingTree.folder().status(path.toNarrow());
    if (!status)
        return status.error() == std::errc::too_many_symbolic_link_levels;
    return status->kind != sys::FileKind::folder;
}

/// Whether what lies there is a file that a step removes, found under another name: a file whose
/// name only changes its letters, on a disk that ignores these.
bool isRemovedUnderOtherName(const WorkingTree& workingTree, const OdString& path,
                             const std::vector<TreeStep>& steps) {
    const sys::Outcome<sys::FileStamp> version = workingTree.folder().stamp(path.toNarrow());
    return version && std::any_of(steps.begin(), steps.end(), [&](const TreeStep& step) {
               const bool isOther = step.path != path && folded(step.path) == folded(path);
               if (!step.after.isEmpty() || !isOther)
                   return false;
               const sys::Outcome<sys::FileStamp> removed =
                   workingTree.folder().stamp(step.path.bytes());
               return removed && removed->number == version->number;
           });
}

ErrorMessage unreadable(const OdString& path, std::error_code cause) {
    return systemFailure(tr(L"'%ls' cannot be read: %ls"), path, cause);
}

/// A file that is not there is in nobody's use; nor is a link, which later is not what was
/// expected.
Expected<bool> isInUse(const WorkingTree& workingTree, const OdString& path) {
    const sys::Outcome<sys::InputFile> file = workingTree.folder().openFile(path.toNarrow());
    if (file)
        return file->isInUse();
    // Its program has a lease on it.
    if (file.error() == std::errc::operation_would_block)
        return true;
    const bool isNoFile = sys::meansAbsent(file.error()) ||
                          file.error() == std::errc::is_a_directory ||
                          file.error() == std::errc::operation_not_supported ||
                          file.error() == std::errc::too_many_symbolic_link_levels;
    if (!isNoFile)
        return unreadable(path, file.error());
    return false;
}

/// Some file systems count their times in steps of this: a file may change again without another
/// time.
constexpr std::chrono::seconds coarsestTimeStep{2};

bool isJustChanged(const sys::FileStamp& version) {
    return !isOlder(version.modifiedNs, coarsestTimeStep);
}

class Look {
public:
    Look(const WorkingTree& workingTree, const WorkingChanges& changes)
        : workingTree_(workingTree), changes_(changes) {}

    /// The version that has the contents which the step expects; nothing when the file has others.
    Expected<std::optional<sys::FileStamp>> sightingOf(const TreeStep& step) const {
        using Answer = Expected<std::optional<sys::FileStamp>>;
        const std::string path = step.path.bytes();
        const sys::Outcome<sys::FileStamp> before = workingTree_.folder().stamp(path);
        if (!before && sys::meansAbsent(before.error()))
            return Answer(std::nullopt);
        if (!before)
            return unreadable(step.path, before.error());
        if (isBelieved(step.path, *before))
            return Answer(*before);
        const Expected<OdString> digest = digestOfFile(workingTree_.folder(), step.path);
        if (!digest)
            return digest.error();
        const sys::Outcome<sys::FileStamp> after = workingTree_.folder().stamp(path);
        const bool isSame = *digest == digestOfUrl(step.before) && after && *after == *before;
        return isSame ? Answer(*before) : Answer(std::nullopt);
    }

private:
    /// As in HEAD, and the steps were made of it.
    bool isBelieved(const OdString& path, const sys::FileStamp& version) const {
        if (changeOf(path, changes_) != common::FileChange::unchanged)
            return false;
        const KnownFile* const file =
            findSorted(changes_.baseline->files(),
                       [&path](const KnownFile& known) { return compare(known.path, path); });
        return file != nullptr && isUnmodified(*file, {.kind = sys::FileKind::regular,
                                                       .number = version.number,
                                                       .sizeBytes = version.sizeBytes,
                                                       .modifiedNs = version.modifiedNs,
                                                       .changedNs = version.changedNs});
    }

    const WorkingTree& workingTree_;
    const WorkingChanges& changes_;
};

}  // namespace

Expected<void> checkNothingInTheWay(const WorkingTree& workingTree,
                                    const std::vector<TreeStep>& steps,
                                    const WorkingChanges& changes) {
    RoomCheck room(questionsOfDisk(workingTree.folder()), removedBy(steps));
    std::vector<OdString> blocked;
    for (const TreeStep& step : steps) {
        const bool needsRoom = !step.after.isEmpty() && !room.fileInTheWay(step.path).isEmpty();
        const bool isTaken = isUnknownFile(workingTree, step.path, changes) &&
                             !isRemovedUnderOtherName(workingTree, step.path, steps);
        if (needsRoom || isTaken)
            blocked.push_back(step.path);
    }
    if (blocked.empty())
        return {};
    return withPaths(
        tr(L"These files have no room, because something that is in no commit has their "
           L"name or that of a folder above them:"),
        blocked);
}

Expected<void> checkNoLocalChanges(const WorkingTree& workingTree,
                                   const std::vector<TreeStep>& steps,
                                   const WorkingChanges& changes) {
    std::vector<OdString> harmed;
    for (const TreeStep& step : steps) {
        if (changeOf(step.path, changes) != common::FileChange::unchanged)
            harmed.push_back(step.path);
    }
    if (!harmed.empty())
        return withPaths(tr(L"These files have changes that are not committed:"), harmed);
    return checkNothingInTheWay(workingTree, steps, changes);
}

Expected<void> checkNames(const WorkingTree& workingTree, const std::vector<TreeStep>& steps) {
    const auto isGone = removedBy(steps);
    FilesAlike disk(workingTree.folder());
    std::map<std::u16string, OdString> known;
    std::vector<OdString> clashes;
    for (const TreeStep& step : steps) {
        if (step.after.isEmpty())
            continue;
        for (const OdString& other : disk.under(step.path)) {
            if (!isGone(other))
                known.emplace(folded(step.path), other);
        }
        const auto [other, isNew] = known.emplace(folded(step.path), step.path);
        if (!isNew && other->second != step.path)
            clashes.push_back(other->second + L", " + step.path);
    }
    if (clashes.empty())
        return {};
    return withPaths(tr(L"This disk takes these names for one, so that the second file would take "
                        L"the place of the first:"),
                     clashes);
}

Expected<void> checkNotInUse(WorkingTree& workingTree, const std::vector<TreeStep>& steps) {
    std::vector<OdString> used;
    std::vector<OdString> locks;
    for (const TreeStep& step : steps) {
        if (step.before.isEmpty())
            continue;
        const std::optional<OdString> lock = lockBeside(step.path, workingTree);
        // One that somebody committed says nothing of today.
        const bool isLocked = lock && !workingTree.repository().history().isHeadFile(*lock);
        const Expected<bool> inUse = isInUse(workingTree, step.path);
        if (!inUse)
            return inUse.error();
        if (isLocked)
            locks.push_back(*lock);
        if (isLocked || *inUse)
            used.push_back(step.path);
    }
    if (used.empty())
        return {};
    ErrorMessage error = withPaths(
        tr(L"These files are open in another program, which has to close them first:"), used);
    if (!locks.empty())
        error.message += L"\n" + withPaths(tr(L"These say so (one that a program left when it "
                                              L"crashed can be deleted):"),
                                           locks)
                                     .message;
    return error;
}

Expected<Sightings> lookAgain(const WorkingTree& workingTree, const std::vector<TreeStep>& steps,
                              const WorkingChanges& changes) {
    Sightings sightings;
    std::vector<OdString> changed;
    const Look look(workingTree, changes);
    for (const TreeStep& step : steps) {
        if (step.before.isEmpty())
            continue;
        const Expected<std::optional<sys::FileStamp>> sighting = look.sightingOf(step);
        if (!sighting)
            return sighting.error();
        if (!*sighting)
            changed.push_back(step.path);
        else if (!isJustChanged(**sighting))
            sightings.emplace(step.path, **sighting);
    }
    if (!changed.empty())
        return withPaths(tr(L"Another program has just changed these files; try again:"), changed);
    return sightings;
}

Expected<Sightings> checkPreconditions(WorkingTree& workingTree, const std::vector<TreeStep>& steps,
                                       const WorkingChanges& changes) {
    if (ignoresLetterCase(workingTree.folder())) {
        if (const Expected<void> possible = checkNames(workingTree, steps); !possible)
            return possible.error();
    }
    if (const Expected<void> free = checkNotInUse(workingTree, steps); !free)
        return free.error();
    return lookAgain(workingTree, steps, changes);
}

}  // namespace qrv
