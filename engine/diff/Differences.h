#pragma once

#include <engine/diff/Snapshot.h>
#include <engine/tree/Renames.h>
#include <platform/kernel/OdString.h>

#include <optional>
#include <vector>

namespace qrv {

/// How one file differs between two snapshots. At least one side is there.
struct Difference {
    OdString path;
    /// The path before, when it is another one; otherwise empty.
    OdString previousPath;
    std::optional<FileVersion> before;
    std::optional<FileVersion> after;

    bool isRenamed() const { return !previousPath.isEmpty(); }
    /// The path that the file has in the older snapshot.
    const OdString& oldPath() const { return isRenamed() ? previousPath : path; }
    bool hasOtherContents() const;
};

/// What leads from the one snapshot to the other, ordered by path. A file that went and one that
/// came are one that was renamed when `noted` says so, or when their contents are the same and not
/// empty.
std::vector<Difference> differencesBetween(const Snapshot& before, const Snapshot& after,
                                           const Renames& noted = {});

}  // namespace qrv
