#include <engine/diff/WorkingFiles.h>
#include <engine/worktree/FileDigest.h>

#include <algorithm>
#include <utility>

namespace qrv {

namespace {

std::optional<TreeFile> inHead(WorkingTree& workingTree, const OdString& path) {
    std::optional<HeadFile> head = workingTree.repository().history().headFile(path);
    return head ? std::optional(std::move(head->file)) : std::nullopt;
}

/// Nothing for one that has gone away since the scan.
Expected<std::optional<TreeFile>> onDisk(const WorkingTree& workingTree, const OdString& path) {
    const sys::Outcome<sys::FileStatus> status = workingTree.folder().status(path.toNarrow());
    Expected<OdString> digest = digestOfFile(workingTree.folder(), path);
    if (!digest)
        return digest.error();
    if (!status || digest->isEmpty())
        return std::optional<TreeFile>();
    return std::optional(TreeFile{std::move(*digest), status->sizeBytes});
}

}  // namespace

Expected<std::vector<Difference>> readWorkingFiles(WorkingTree& workingTree,
                                                   const WorkingChanges& changes) {
    std::vector<Difference> files;
    for (const common::File& file : changes.files.removed)
        files.push_back({file.path, {}, inHead(workingTree, file.path), std::nullopt});
    for (const auto* const changed : {&changes.files.modified, &changes.files.added}) {
        for (const common::File& file : *changed) {
            Expected<std::optional<TreeFile>> now = onDisk(workingTree, file.path);
            if (!now)
                return now.error();
            std::optional<TreeFile> before = inHead(workingTree, file.path);
            if (before || *now)
                files.push_back({file.path, {}, std::move(before), std::move(*now)});
        }
    }
    std::sort(files.begin(), files.end(),
              [](const Difference& one, const Difference& other) { return one.path < other.path; });
    return files;
}

}  // namespace qrv
