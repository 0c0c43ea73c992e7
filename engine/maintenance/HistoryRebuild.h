#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <engine/base/Caller.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

#include <cstdint>
#include <string>
#include <vector>

namespace qrv {

/// What was made anew.
struct Rebuilt {
    /// Commits that the history lacked.
    std::int64_t commits = 0;
    /// Branches and tags that it lacked, or that pointed elsewhere.
    std::int64_t references = 0;
    /// Where the damaged history lies now, below the root; empty when it was whole or missing.
    OdString setAside;
    /// What could not be made anew, one text for each finding.
    std::vector<OdString> problems;
};

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

/// The same for the repository that holds `folder`, under its lock. Fails like `WorkingTree::open`,
/// but not for a lost history.
Expected<Rebuilt> rebuildHistory(const std::string& folder, Caller& caller);

}  // namespace qrv
