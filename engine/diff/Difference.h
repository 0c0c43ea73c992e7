#pragma once

#include <engine/tree/TreeFile.h>
#include <platform/kernel/OdString.h>

#include <optional>

namespace qrv {

/// How one file differs between two trees. At least one side is there.
struct Difference {
    /// The path; where the file is gone, the one that it had.
    OdString path;
    /// The path before, when it is another one; otherwise empty.
    OdString previousPath;
    /// The file in the older tree.
    std::optional<TreeFile> before;
    /// The file in the newer tree.
    std::optional<TreeFile> after;

    /// Whether the file has another path.
    bool isRenamed() const { return !previousPath.isEmpty(); }
    /// The path that the file has in the older tree.
    const OdString& oldPath() const { return isRenamed() ? previousPath : path; }
    /// Whether the file has other contents, or is on one side only.
    bool hasOtherContents() const { return !before || !after || !before->hasSameContents(*after); }
};

}  // namespace qrv
