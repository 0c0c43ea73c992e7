#pragma once

#include <engine/tree/FileDelta.h>
#include <engine/tree/Tree.h>
#include <platform/kernel/OdString.h>

#include <functional>
#include <map>
#include <vector>

namespace qrv {

/// From the new paths of files to the previous ones.
using Renames = std::map<OdString, OdString>;

/// The renames that a commit has noted.
Renames renamesOf(const std::vector<FileDelta>& deltas);

/// The files of one side of a comparison that the other side does not have, in order.
struct RenameHalves {
    std::vector<SizedFile> files;
    /// Gives the digest of the contents of such a file; empty when nobody can tell, and then the
    /// file was not renamed.
    std::function<OdString(const OdString& path)> digestOf;
};

/// Joins files that went with files that came, each with one at most: first those whose rename is
/// `noted`, then those with equal contents, in the order of the new files. Asks for the digests
/// only of files whose sizes are equal.
Renames findRenames(const RenameHalves& removed, const RenameHalves& added,
                    const Renames& noted = {});

}  // namespace qrv
