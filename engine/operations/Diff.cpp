#include <engine/base/Printable.h>
#include <engine/base/SortedLookup.h>
#include <engine/base/Translation.h>
#include <engine/diff/Contents.h>
#include <engine/diff/Differences.h>
#include <engine/diff/Patch.h>
#include <engine/diff/WorkingFiles.h>
#include <engine/history/CommitName.h>
#include <engine/operations/Diff.h>
#include <engine/operations/WithRepositoryInternal.h>
#include <engine/paths/PathParts.h>
#include <engine/worktree/PathArgument.h>

#include <algorithm>
#include <map>
#include <utility>

namespace qrv {

namespace {

using Differences = Expected<std::vector<Difference>>;

/// The two sides of a comparison, and what they do not have alike.
struct Sides {
    OdString before;
    /// HEAD, for the working files.
    OdString after;
    /// Empty for two commits.
    std::vector<Difference> working;
};

Expected<OdString> hashOf(Repository& repository, const std::optional<OdString>& name) {
    if (!name)
        return repository.history().note(headNote);
    return findCommit(repository.history(), *name, repository.branch());
}

Expected<Sides> sidesOf(WorkingTree& workingTree, const DiffRequest& request) {
    Repository& repository = workingTree.repository();
    const Expected<OdString> before = hashOf(repository, request.before);
    if (!before)
        return before.error();
    const Expected<OdString> after = hashOf(repository, request.after);
    if (!after)
        return after.error();
    if (request.after)
        return Sides{*before, *after, {}};
    const Expected<WorkingChanges> changes = findChanges(workingTree);
    if (!changes)
        return changes.error();
    Expected<std::vector<Difference>> working = readWorkingFiles(workingTree, *changes);
    if (!working)
        return working.error();
    return Sides{*before, *after, std::move(*working)};
}

/// What leads to the working files, from what leads to HEAD and on from there.
std::vector<Difference> joined(std::vector<Difference> toHead, std::vector<Difference> fromHead) {
    std::map<OdString, Difference> files;
    for (Difference& file : toHead)
        files.emplace(file.path, std::move(file));
    for (Difference& file : fromHead) {
        const auto before = files.find(file.path);
        if (before != files.end())
            file.before = std::move(before->second.before);
        files.insert_or_assign(file.path, std::move(file));
    }
    std::vector<Difference> all;
    for (auto& [path, file] : files) {
        if (file.before || file.after)
            all.push_back(std::move(file));
    }
    return all;
}

/// Whether a file is there, or one below that path.
bool isOnASide(History& history, const Sides& sides, const OdString& path) {
    const auto file = [&sides](const OdString& each) {
        return findSorted(sides.working,
                          [&each](const Difference& other) { return other.path <=> each; });
    };
    const auto isGone = [&file](const OdString& each) {
        const Difference* const working = file(each);
        return working != nullptr && !working->after;
    };
    const auto isNew = [&path](const Difference& each) {
        return each.after && isChosen(each.path, {path});
    };
    return history.holds(sides.before, path) || history.holds(sides.after, path, isGone) ||
           std::any_of(sides.working.begin(), sides.working.end(), isNew);
}

Expected<std::vector<OdString>> chosenPaths(Repository& repository,
                                            const std::vector<std::string>& arguments,
                                            const Sides& sides) {
    std::vector<OdString> chosen;
    for (const std::string& argument : arguments) {
        const Expected<OdString> path = pathInRepository(repository.root(), argument);
        if (!path)
            return path.error();
        if (!isOnASide(repository.history(), sides, *path))
            return ErrorMessage{OdString::format(tr(L"'%ls' is on neither side of the comparison"),
                                                 printable(OdString::fromNarrow(argument)))};
        chosen.push_back(*path);
    }
    return chosen;
}

Differences diff(WorkingTree& workingTree, const DiffRequest& request) {
    Repository& repository = workingTree.repository();
    Expected<Sides> sides = sidesOf(workingTree, request);
    if (!sides)
        return sides.error();
    const Expected<std::vector<OdString>> chosen = chosenPaths(repository, request.paths, *sides);
    if (!chosen)
        return chosen.error();
    std::vector<Difference> differences = withRenames(
        joined(differencesOf(repository.history().difference(sides->before, sides->after)),
               std::move(sides->working)));
    if (!chosen->empty())
        std::erase_if(differences, [&chosen](const Difference& difference) {
            return !isChosen(difference.path, *chosen) && !isChosen(difference.oldPath(), *chosen);
        });
    return differences;
}

/// An absent side is an empty text.
Expected<std::optional<std::string>> readSide(WorkingTree& workingTree, const OdString& path,
                                              const std::optional<TreeFile>& version) {
    if (!version)
        return std::optional(std::string());
    return readText(workingTree, path, *version);
}

Expected<void> givePatch(WorkingTree& workingTree, const Difference& difference,
                         const PatchSink& onLine) {
    if (!difference.hasOtherContents()) {
        writePatchHeading(difference, onLine);
        return {};
    }
    const auto before = readSide(workingTree, difference.oldPath(), difference.before);
    if (!before)
        return before.error();
    const auto after = readSide(workingTree, difference.path, difference.after);
    if (!after)
        return after.error();
    if (*before && *after) {
        writePatchHeading(difference, onLine);
        writePatchLines(difference, **before, **after, onLine);
    } else {
        writeBinaryRemark(difference, onLine);
    }
    return {};
}

}  // namespace

Expected<std::vector<Difference>> diff(const std::string& folder, const DiffRequest& request,
                                       Caller& caller) {
    return withLook(folder, caller,
                    [&request](WorkingTree& workingTree) { return diff(workingTree, request); });
}

Expected<void> diffLines(const std::string& folder, const DiffRequest& request,
                         const DifferenceSink& onFile, const PatchSink& onLine, Caller& caller) {
    return withLook(folder, caller, [&](WorkingTree& workingTree) -> Expected<void> {
        const Differences differences = diff(workingTree, request);
        if (!differences)
            return differences.error();
        for (const Difference& difference : *differences) {
            onFile(difference);
            if (Expected<void> given = givePatch(workingTree, difference, onLine); !given)
                return given;
        }
        return {};
    });
}

}  // namespace qrv
