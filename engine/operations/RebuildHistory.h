#pragma once

#include <common/base/Expected.h>
#include <engine/base/Caller.h>
#include <engine/base/Export.h>
#include <engine/maintenance/Rebuilt.h>

#include <string>

namespace qrv {

/// Makes the history of the repository that holds `folder` whole again from what lies beside it:
/// the records of the references and of the commits, and what can still be read of a damaged
/// history, which is kept under another name. Commits get their hashes back, in an order that may
/// give them other numbers. What an interrupted command had noted is lost with a history that is
/// missing or damaged.
///
/// All happens at once: killed on the way, it can be done again. A whole history that agrees with
/// the records is left as it is. What could not be made anew is no failure but among the problems
/// of the answer. Fails when the repository cannot be opened or changed.
QRV_ENGINE_EXPORT Expected<Rebuilt> rebuildHistory(const std::string& folder, Caller& caller);

}  // namespace qrv
