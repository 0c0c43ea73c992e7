#include <engine/base/SortedLookup.h>
#include <engine/tree/ThreeWay.h>

namespace qrv {

using common::FileChange;

namespace {

FileChange changeBetween(const OdString& before, const OdString& after) {
    if (before.isEmpty())
        return FileChange::added;
    return after.isEmpty() ? FileChange::removed : FileChange::modified;
}

OdString contentsOf(const std::optional<TreeFile>& file) {
    return file ? file->contents : OdString();
}

}  // namespace

ThreeWayResult compareThreeWays(const std::vector<TreeChange>& ours,
                                const std::vector<TreeChange>& theirs) {
    ThreeWayResult result;
    // Only what the other side changed can need anything to be done.
    for (const TreeChange& change : theirs) {
        const TreeChange* const mine =
            findSorted(ours, [&change](const TreeChange& our) { return our.path <=> change.path; });
        const OdString before = contentsOf(change.before);
        const OdString local = mine == nullptr ? before : contentsOf(mine->after);
        const TreeFile remote = change.after.value_or(TreeFile());
        if (local == remote.contents)
            continue;
        if (mine == nullptr)
            result.taken.push_back({change.path, local, remote.contents, remote.sizeBytes});
        else
            result.conflicts.push_back({change.path, changeBetween(before, local),
                                        changeBetween(before, remote.contents), local,
                                        remote.contents});
    }
    return result;
}

}  // namespace qrv
