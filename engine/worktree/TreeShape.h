#pragma once

#include <common/base/Expected.h>
#include <engine/history/Commit.h>
#include <engine/tree/Tree.h>

#include <vector>

namespace qrv {

/// Fails when `tree` with `deltas` would hold a file and, below its name, another one. No disk can
/// hold such a tree; a person makes one who stages the file that took the place of a folder, but
/// not that the files of the folder are gone.
Expected<void> checkShape(const Tree& tree, const std::vector<FileDelta>& deltas);

}  // namespace qrv
