#include <engine/diff/WorkingFiles.h>
#include <engine/worktree/FileDigest.h>

#include <utility>

namespace qrv {

namespace {

Expected<void> addWorkingFile(const WorkingTree& workingTree, const OdString& path,
                              WorkingFiles& files) {
    const sys::Outcome<sys::FileStatus> status = workingTree.folder().status(path.toNarrow());
    Expected<OdString> digest = digestOfFile(workingTree.folder(), path);
    if (!digest)
        return digest.error();
    // It may have gone away since the scan.
    if (!status || digest->isEmpty())
        files.erase(path);
    else
        files[path] = {std::move(*digest), status->sizeBytes};
    return {};
}

}  // namespace

Expected<WorkingFiles> readWorkingFiles(WorkingTree& workingTree, const WorkingChanges& changes) {
    const Tree& head = workingTree.repository().headFiles();
    WorkingFiles files(head.begin(), head.end());
    for (const common::File& file : changes.files.removed)
        files.erase(file.path);
    for (const auto* const changed : {&changes.files.modified, &changes.files.added}) {
        for (const common::File& file : *changed) {
            if (const Expected<void> added = addWorkingFile(workingTree, file.path, files); !added)
                return added.error();
        }
    }
    return files;
}

}  // namespace qrv
