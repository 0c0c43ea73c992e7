#include <common/worktree/RepoFileExplorer.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/operations/Add.h>
#include <engine/operations/NamedChangesInternal.h>
#include <engine/operations/StagingFactsInternal.h>
#include <engine/operations/WithRepositoryInternal.h>
#include <engine/paths/RelativePath.h>
#include <engine/worktree/FileWord.h>
#include <engine/worktree/PathArgument.h>
#include <engine/worktree/Staging.h>
#include <engine/worktree/WorkingChanges.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <utility>

namespace qrv {

namespace {

using common::StagedFile;

OdString listOf(const std::vector<OdString>& paths) {
    OdString text;
    for (const OdString& path : paths)
        text += L"\n  " + printable(path);
    return text;
}

/// Why the word stands for no changed file.
ErrorMessage whyNone(const std::string& argument, const std::vector<OdString>& changed,
                     const std::vector<OdString>& unchanged, const WorkingTree& workingTree) {
    const OdString word = OdString::fromNarrow(argument);
    const Expected<std::vector<OdString>> found =
        filesOfWord(workingTree.root(), argument, unchanged);
    if (found && !found->empty())
        return {OdString::format(tr(L"'%ls' has not changed"),
                                 printable(found->size() == 1 ? found->front() : word))};
    if (const Expected<OdString> path = pathInRepository(workingTree.root(), argument); !path)
        return path.error();
    const OdString text = OdString::format(tr(L"There is no changed file '%ls'"), printable(word));
    const std::vector<OdString> near = nearPaths(word, changed);
    return {near.empty() ? text : text + tr(L"; did you mean:") + listOf(near)};
}

std::vector<OdString> pathsOf(const std::vector<StagedFile>& files) {
    std::vector<OdString> paths;
    paths.reserve(files.size());
    for (const StagedFile& file : files)
        paths.push_back(file.path);
    return paths;
}

std::vector<OdString> unchangedPaths(const WorkingChanges& changes, WorkingTree& workingTree) {
    std::vector<OdString> paths;
    for (const common::UnchangedFile& file : unchangedFiles(changes, workingTree))
        paths.push_back(file.path);
    return paths;
}

Expected<std::vector<StagedFile>> findChosen(const AddRequest& request, WorkingTree& workingTree,
                                             const WorkingChanges& changes) {
    const common::RepoFileExplorer explorer(changes.files, workingTree.root());
    const std::vector<StagedFile> candidates = candidatesOf(explorer);
    if (request.all)
        return candidates;
    const std::vector<OdString> paths = pathsOf(candidates);
    std::set<OdString> chosen;
    for (const std::string& argument : request.paths) {
        const Expected<std::vector<OdString>> found =
            filesOfWord(workingTree.root(), argument, paths);
        if (!found)
            return found.error();
        if (found->empty())
            return whyNone(argument, paths, unchangedPaths(changes, workingTree), workingTree);
        chosen.insert(found->begin(), found->end());
    }
    std::vector<StagedFile> files;
    std::copy_if(candidates.begin(), candidates.end(), std::back_inserter(files),
                 [&chosen](const StagedFile& file) { return chosen.contains(file.path); });
    return files;
}

bool isNamed(const OdString& path, const AddRequest& request, const WorkingTree& workingTree) {
    return std::any_of(request.paths.begin(), request.paths.end(), [&](const auto& argument) {
        const Expected<OdString> named = pathInRepository(workingTree.root(), argument);
        return named && *named == path;
    });
}

/// Leaves out files whose paths could not be used on every system, and says so: one of them in
/// a large folder must not keep the rest from being staged. One that is named itself is an
/// error.
Expected<std::vector<StagedFile>> withoutUnsafe(std::vector<StagedFile> files,
                                                const WorkingChanges& changes,
                                                const AddRequest& request,
                                                const WorkingTree& workingTree) {
    std::set<OdString> leftOut;
    for (const StagedFile& file : files) {
        const Expected<RelativePath> path = RelativePath::check(file.path);
        if (path)
            continue;
        if (isNamed(file.path, request, workingTree))
            return path.error();
        workingTree.caller().note(
            OdString::format(tr(L"Note: left out: %ls"), path.error().message));
        leftOut.insert(file.path);
        // Otherwise a commit would hold neither half of a renaming.
        if (const auto rename = changes.renames.find(file.path); rename != changes.renames.end())
            leftOut.insert(rename->second);
    }
    std::erase_if(files, [&leftOut](const auto& file) { return leftOut.contains(file.path); });
    return files;
}

/// Stages what is chosen of these changes.
Expected<Added> addFrom(const WorkingChanges& changes, WorkingTree& workingTree,
                        const AddRequest& request) {
    const Expected<std::vector<StagedFile>> chosen = findChosen(request, workingTree, changes);
    if (!chosen)
        return chosen.error();
    Expected<std::vector<StagedFile>> safe =
        withoutUnsafe(withRenameHalves(*chosen, changes), changes, request, workingTree);
    if (!safe)
        return safe.error();
    Added added;
    added.staged = std::move(*safe);
    findStagingFacts(added, request.largeFileBytes, changes, workingTree);
    stage(added.staged, changes, workingTree.repository().cache());
    return added;
}

Expected<Added> addTo(WorkingTree& workingTree, const AddRequest& request) {
    if (!request.all) {
        if (const std::optional<WorkingChanges> named =
                findNamedChanges(request.paths, workingTree))
            return addFrom(*named, workingTree, request);
    }
    const Expected<WorkingChanges> changes = findChanges(workingTree);
    if (!changes)
        return changes.error();
    return addFrom(*changes, workingTree, request);
}

}  // namespace

Expected<Added> add(const std::string& folder, const AddRequest& request, Caller& caller) {
    return withRepository(
        folder, Repository::Use::change, caller,
        [&](WorkingTree& workingTree) { return addTo(workingTree, request); },
        request.all ? WorkingTree::Scan::ahead : WorkingTree::Scan::later);
}

}  // namespace qrv
