#include <engine/worktree/ThreeWay.h>

#include <set>

namespace qrv {

using common::FileChange;

namespace {

TreeFile fileOf(const Tree& tree, const OdString& path) {
    const auto file = tree.find(path);
    return file == tree.end() ? TreeFile() : file->second;
}

FileChange changeBetween(const OdString& before, const OdString& after) {
    if (before.isEmpty())
        return FileChange::added;
    return after.isEmpty() ? FileChange::removed : FileChange::modified;
}

/// Only what the other side changed can need anything to be done.
std::set<OdString> changedPaths(const Tree& base, const Tree& theirs) {
    std::set<OdString> paths;
    for (const auto& [path, file] : base) {
        if (fileOf(theirs, path).url != file.url)
            paths.insert(path);
    }
    for (const auto& [path, file] : theirs) {
        if (fileOf(base, path).url != file.url)
            paths.insert(path);
    }
    return paths;
}

}  // namespace

ThreeWayResult compareThreeWays(const Tree& base, const Tree& ours, const Tree& theirs) {
    ThreeWayResult result;
    for (const OdString& path : changedPaths(base, theirs)) {
        const OdString before = fileOf(base, path).url;
        const OdString local = fileOf(ours, path).url;
        const TreeFile remote = fileOf(theirs, path);
        if (local == remote.url)
            continue;
        if (local == before)
            result.taken.push_back({path, local, remote.url, remote.sizeBytes});
        else
            result.conflicts.push_back({path, changeBetween(before, local),
                                        changeBetween(before, remote.url), local, remote.url});
    }
    return result;
}

}  // namespace qrv
