#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>

namespace qrv {

/// Fails when the state file nests deeper than any that a program of ours writes. Every level costs
/// the reader some two hundred times its size, and the printing of a document goes with the square
/// of its depth. A file that cannot be read is left to whoever reads it next.
Expected<void> checkStateDepth(const common::RootPath& root);

}  // namespace qrv
