#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/diff/Contents.h>
#include <engine/diff/Differences.h>
#include <engine/diff/Patch.h>
#include <engine/history/CommitName.h>
#include <engine/operations/Diff.h>
#include <engine/operations/WithRepositoryInternal.h>
#include <engine/paths/PathParts.h>
#include <engine/worktree/PathArgument.h>

#include <algorithm>
#include <utility>

namespace qrv {

namespace {

using Differences = Expected<std::vector<Difference>>;

Expected<Tree> treeOfCommit(Repository& repository, const OdString& name) {
    const Expected<OdString> hash = findCommit(repository.history(), name, repository.branch());
    if (!hash)
        return hash.error();
    return repository.history().tree(*hash);
}

template <class After>
Expected<std::vector<OdString>> chosenPaths(const common::RootPath& root,
                                            const std::vector<std::string>& arguments,
                                            const Tree& before, const After& after) {
    std::vector<OdString> chosen;
    for (const std::string& argument : arguments) {
        const Expected<OdString> path = pathInRepository(root, argument);
        if (!path)
            return path.error();
        const auto isThere = [&path](const auto& file) { return isChosen(file.first, {*path}); };
        if (std::none_of(before.begin(), before.end(), isThere) &&
            std::none_of(after.begin(), after.end(), isThere))
            return ErrorMessage{OdString::format(tr(L"'%ls' is on neither side of the comparison"),
                                                 printable(OdString::fromNarrow(argument)))};
        chosen.push_back(*path);
    }
    return chosen;
}

template <class After>
Differences chosenDifferences(const common::RootPath& root, const DiffRequest& request,
                              const Tree& before, const After& after) {
    const Expected<std::vector<OdString>> chosen = chosenPaths(root, request.paths, before, after);
    if (!chosen)
        return chosen.error();
    std::vector<Difference> differences = differencesBetween(before, after);
    if (!chosen->empty())
        std::erase_if(differences, [&chosen](const Difference& difference) {
            return !isChosen(difference.path, *chosen) && !isChosen(difference.oldPath(), *chosen);
        });
    return differences;
}

Differences diff(WorkingTree& workingTree, const DiffRequest& request) {
    Repository& repository = workingTree.repository();
    const Expected<Tree> before =
        request.before ? treeOfCommit(repository, *request.before) : repository.headFiles();
    if (!before)
        return before.error();
    if (request.after) {
        const Expected<Tree> after = treeOfCommit(repository, *request.after);
        if (!after)
            return after.error();
        return chosenDifferences(repository.root(), request, *before, *after);
    }
    const Expected<WorkingChanges> changes = findChanges(workingTree);
    if (!changes)
        return changes.error();
    const Expected<WorkingFiles> after = readWorkingFiles(workingTree, *changes);
    if (!after)
        return after.error();
    return chosenDifferences(repository.root(), request, *before, *after);
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
