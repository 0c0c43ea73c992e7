#pragma once

#include <common/base/Expected.h>
#include <engine/tree/TreeFile.h>
#include <engine/worktree/WorkingTree.h>
#include <platform/kernel/OdString.h>

#include <optional>
#include <string>

namespace qrv {

/// The bytes of the file `path` in this version, if they are a text whose lines can be compared:
/// nothing for a drawing, a file of more than 10 MB, and what is not text (see isText). Fails when
/// they cannot be read, and when what is stored is damaged.
Expected<std::optional<std::string>> readText(WorkingTree& workingTree, const OdString& path,
                                              const TreeFile& version);

}  // namespace qrv
