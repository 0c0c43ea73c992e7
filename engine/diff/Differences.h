#pragma once

#include <engine/diff/Difference.h>
#include <engine/diff/WorkingFiles.h>
#include <engine/tree/Renames.h>
#include <engine/tree/Tree.h>

#include <vector>

namespace qrv {

/// What leads from the one tree to the other, ordered by path. A file that went and one that came
/// are one that was renamed when `noted` says so, or when their contents are the same and not
/// empty.
std::vector<Difference> differencesBetween(const Tree& before, const Tree& after,
                                           const Renames& noted = {});
/// The same for the working files.
std::vector<Difference> differencesBetween(const Tree& before, const WorkingFiles& after,
                                           const Renames& noted = {});

}  // namespace qrv
