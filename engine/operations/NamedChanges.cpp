#include <engine/operations/NamedChangesInternal.h>
#include <engine/operations/StagingFactsInternal.h>
#include <engine/paths/RelativePath.h>
#include <engine/worktree/PathArgument.h>

#include <algorithm>
#include <utility>

namespace qrv {

namespace {

using common::FileChange;
using common::StagedFile;

sys::FileKind kindOf(const OdString& path, const WorkingTree& workingTree) {
    const sys::Outcome<sys::FileStatus> status = workingTree.folder().status(path.toNarrow());
    return status ? status->kind : sys::FileKind::other;
}

/// Nothing when one of them is no regular file, or has a name with which nothing is staged.
std::optional<std::vector<OdString>> pathsOf(const std::vector<std::string>& words,
                                             const WorkingTree& workingTree) {
    std::vector<OdString> paths;
    for (const std::string& word : words) {
        const Expected<OdString> path = pathInRepository(workingTree.root(), word);
        if (!path || !RelativePath::check(*path) ||
            kindOf(*path, workingTree) != sys::FileKind::regular)
            return std::nullopt;
        paths.push_back(*path);
    }
    return paths;
}

/// Whether a file of HEAD that has this size, and so perhaps these contents, is gone. All empty
/// files are equal, which says nothing.
bool mayHaveBeenAnother(const OdString& path, WorkingTree& workingTree) {
    const sys::Outcome<sys::FileStatus> status = workingTree.folder().status(path.toNarrow());
    if (!status || status->sizeBytes == 0)
        return !status;
    const std::vector<OdString> alike =
        workingTree.repository().history().headPathsOfSize(status->sizeBytes);
    return std::any_of(alike.begin(), alike.end(), [&](const OdString& other) {
        return kindOf(other, workingTree) != sys::FileKind::regular;
    });
}

/// Whether the file stands for itself alone.
bool isAlone(const StagedFile& file, WorkingTree& workingTree) {
    if (file.change == FileChange::modified)
        return true;
    return file.change == FileChange::added &&
           workingTree.repository().history().headPathsBelow(file.path).empty() &&
           !mayHaveBeenAnother(file.path, workingTree);
}

}  // namespace

std::optional<WorkingChanges> findNamedChanges(const std::vector<std::string>& words,
                                               WorkingTree& workingTree) {
    const std::optional<std::vector<OdString>> paths = pathsOf(words, workingTree);
    if (!paths || paths->empty())
        return std::nullopt;
    Expected<WorkingChanges> changes = findChangesOf(workingTree, *paths);
    if (!changes)
        return std::nullopt;
    std::vector<StagedFile> files;
    for (const OdString& path : *paths)
        files.emplace_back(path, changeOf(path, *changes));
    const bool areAlone = std::all_of(files.begin(), files.end(), [&](const StagedFile& file) {
        return isAlone(file, workingTree);
    });
    if (!areAlone || haveNamesAlike(files, workingTree))
        return std::nullopt;
    return std::move(*changes);
}

}  // namespace qrv
