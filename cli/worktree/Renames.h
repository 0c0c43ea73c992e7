#pragma once

#include <cli/history/Commit.h>
#include <cli/worktree/Workspace.h>
#include <platform/kernel/OdString.h>

#include <map>
#include <vector>

namespace qrv_cli {

/// From the path of a new file to that of a removed file of HEAD with the same contents; each in
/// one pair at most, in the order of the new ones. Only files whose sizes are equal are read.
std::map<OdString, OdString> findRenames(Workspace& workspace,
                                         const std::vector<SizedFile>& newFiles,
                                         const std::vector<SizedFile>& removed);

}  // namespace qrv_cli
