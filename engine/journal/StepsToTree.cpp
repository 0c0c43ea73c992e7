#include <common/storage/StorageUrl.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/journal/Preconditions.h>
#include <engine/journal/StepsToTree.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/tree/Tree.h>
#include <engine/worktree/FileDigest.h>
#include <engine/worktree/PathList.h>

#include <algorithm>
#include <utility>

namespace qrv {

namespace {

/// What lies under a path now: the URL of a stored version, or contents that are kept nowhere.
struct Present {
    OdString url;
    bool isUnsaved = false;
};

/// Versions that a file may have come from; those of a drawing say which store may keep it.
struct Origins {
    History& history;
    /// The commit that is being merged; empty when none is.
    OdString merged;
    const Tree& target;
};

/// The URLs under which the contents may be kept.
std::vector<OdString> possibleUrls(const Origins& origins, const OdString& path,
                                   const OdString& digest) {
    if (common::fileToType(path) == common::FileStorage::Plain)
        return {objectUrl(digest)};
    std::vector<OdString> urls;
    const std::optional<TreeFile> merged = origins.history.fileAt(origins.merged, path);
    for (const OdString& known :
         {origins.history.headUrl(path), merged.value_or(TreeFile()).contents,
          urlIn(origins.target, path)}) {
        const Expected<CheckedUrl> url = CheckedUrl::check(known);
        if (url && url->isDrawing())
            urls.push_back(drawingUrl(url->store(), digest));
    }
    return urls;
}

Expected<Present> lookAt(WorkingTree& workingTree, const OdString& path,
                         const WorkingChanges& changes, const Origins& origins) {
    const common::FileChange change = changeOf(path, changes);
    if (change == common::FileChange::removed)
        return Present();
    // In HEAD, or nowhere.
    if (change == common::FileChange::unchanged)
        return Present{origins.history.headUrl(path), false};
    const Expected<OdString> digest = digestOfFile(workingTree.folder(), path);
    if (!digest)
        return digest.error();
    for (const OdString& url : possibleUrls(origins, path, *digest)) {
        const Expected<bool> isKept =
            workingTree.repository().storages().ofUrl(url).renew(workingTree.root(), url);
        if (!isKept)
            return isKept.error();
        if (*isKept)
            return Present{url, false};
    }
    return Present{{}, true};
}

Expected<OdString> keep(WorkingTree& workingTree, const OdString& path) {
    const Expected<OdString> url =
        workingTree.repository().storages().ofFile(path).store(workingTree.root(), path);
    if (!url)
        return url.error();
    if (const Expected<void> flushed =
            workingTree.repository().storages().flush(workingTree.root());
        !flushed)
        return flushed.error();
    workingTree.caller().note(
        OdString::format(tr(L"Note: what '%ls' held is kept as %ls"), printable(path), *url));
    return *url;
}

ErrorMessage refusal(const std::vector<OdString>& paths) {
    return withPaths(tr(L"These files have changes that are kept nowhere (--force replaces them):"),
                     paths);
}

}  // namespace

Expected<std::vector<TreeStep>> stepsToTree(WorkingTree& workingTree, const Tree& target,
                                            const std::vector<OdString>& paths,
                                            const WorkingChanges& changes, Unsaved unsaved) {
    std::vector<TreeStep> steps;
    std::vector<OdString> refused;
    History& history = workingTree.repository().history();
    const Origins origins = {history, history.note(mergeNote), target};
    for (const OdString& path : paths) {
        const Expected<Present> present = lookAt(workingTree, path, changes, origins);
        if (!present)
            return present.error();
        const TreeFile* const wanted = fileIn(target, path);
        const TreeFile file = wanted == nullptr ? TreeFile() : *wanted;
        if (!present->isUnsaved && present->url == file.contents)
            continue;
        if (present->isUnsaved)
            refused.push_back(path);
        Expected<RelativePath> safe = RelativePath::check(path);
        if (!safe)
            return safe.error();
        steps.push_back({std::move(*safe), present->url, file.contents, file.sizeBytes});
    }
    if (!refused.empty() && unsaved == Unsaved::refuse)
        return refusal(refused);
    if (const Expected<void> free = checkNothingInTheWay(workingTree, steps, changes); !free)
        return free.error();
    for (TreeStep& step : steps) {
        if (unsaved == Unsaved::leave ||
            !std::binary_search(refused.begin(), refused.end(), step.path))
            continue;
        Expected<OdString> url = keep(workingTree, step.path);
        if (!url)
            return url.error();
        step.before = std::move(*url);
    }
    return steps;
}

}  // namespace qrv
