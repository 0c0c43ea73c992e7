#include <engine/diff/Snapshot.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/worktree/FileDigest.h>

#include <utility>

namespace qrv {

namespace {

Expected<void> addWorkingFile(const WorkingTree& workingTree, const OdString& path,
                              Snapshot& files) {
    const sys::Outcome<sys::FileStatus> status = workingTree.folder().status(path.toNarrow());
    Expected<OdString> digest = digestOfFile(workingTree.folder(), path);
    if (!digest)
        return digest.error();
    // It may have gone away since the scan.
    if (!status || digest->isEmpty())
        files.erase(path);
    else
        files[path] = {{}, std::move(*digest), status->sizeBytes};
    return {};
}

}  // namespace

OdString digestOf(const FileVersion& version) {
    if (version.url.isEmpty())
        return version.digest;
    // The history gives out no other URLs than such as can be checked.
    return CheckedUrl::check(version.url)->digest();
}

Snapshot snapshotOf(const Tree& tree) {
    Snapshot files;
    for (const auto& [path, file] : tree)
        files.emplace_hint(files.end(), path, FileVersion{file.url, {}, file.sizeBytes});
    return files;
}

Expected<Snapshot> snapshotOf(WorkingTree& workingTree, const WorkingChanges& changes) {
    Snapshot files = snapshotOf(workingTree.repository().headFiles());
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
