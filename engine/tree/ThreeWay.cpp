#include <engine/tree/Difference.h>
#include <engine/tree/ThreeWay.h>

namespace qrv {

using common::FileChange;

namespace {

FileChange changeBetween(const OdString& before, const OdString& after) {
    if (before.isEmpty())
        return FileChange::added;
    return after.isEmpty() ? FileChange::removed : FileChange::modified;
}

}  // namespace

ThreeWayResult compareThreeWays(const Tree& base, const Tree& ours, const Tree& theirs) {
    ThreeWayResult result;
    // Only what the other side changed can need anything to be done.
    visitDifferences(
        base, theirs, [&](const auto& path, const TreeFile* old, const TreeFile* other) {
            const OdString before = old == nullptr ? OdString() : old->contents;
            const OdString local = urlIn(ours, path);
            const TreeFile remote = other == nullptr ? TreeFile() : *other;
            if (local == remote.contents)
                return;
            if (local == before)
                result.taken.push_back({path, local, remote.contents, remote.sizeBytes});
            else
                result.conflicts.push_back({path, changeBetween(before, local),
                                            changeBetween(before, remote.contents), local,
                                            remote.contents});
        });
    return result;
}

}  // namespace qrv
