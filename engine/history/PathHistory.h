#pragma once

#include <engine/history/History.h>
#include <platform/kernel/OdString.h>

#include <vector>

namespace qrv {

/// Those of the commits that changed the file `path`, renamed or removed it, also under the names
/// that it had before; or, when no commit knows such a file, those that changed something in such a
/// folder. `commits` are a commit and all that it builds on, newest first. May throw
/// `DatabaseError`.
///
/// A rename is followed along first parents, on which commits note them.
std::vector<CommitEntry> commitsThatChanged(History& history, std::vector<CommitEntry> commits,
                                            const OdString& path);

}  // namespace qrv
