#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <engine/maintenance/Rebuilt.h>
#include <sys/Folder.h>

#include <string>

namespace qrv {

/// Makes the history of a repository whole again from what lies beside it: the record of the
/// references, the record of each commit, and what can still be read of a damaged history, which is
/// kept under another name. Commits get their hashes back, in an order that may give them other
/// numbers, and sizes from what is stored. The files of HEAD become those of the state's branch.
/// What an interrupted command had noted is lost with a history that is missing or damaged.
///
/// Everything happens in one transaction: killed on the way, it can be done again. A whole history
/// that agrees with the records is left as it is. Needs the lock. May throw `DatabaseError`.
Expected<Rebuilt> rebuildHistory(const common::RootPath& root, const sys::Folder& folder,
                                 const std::string& command);

}  // namespace qrv
