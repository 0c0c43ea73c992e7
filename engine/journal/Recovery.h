#pragma once

#include <common/base/Expected.h>
#include <engine/worktree/WorkingTree.h>
#include <platform/kernel/OdString.h>

namespace qrv {

/// Finishes or takes back what an interrupted command left, and tells so. A working file that is
/// neither as before nor as planned was changed by somebody meanwhile: it is left alone, and named.
/// Needs the lock.
///
/// Fails, and the plan stays noted, when anything cannot be looked at, written or removed, and when
/// a file of the plan is open in another program: nobody can tell then what was done already, and
/// whoever forgot the plan would take the other branch's files for a person's work.
Expected<void> recover(WorkingTree& workingTree);

/// Tells that a file was left as it is.
void tellLeft(const OdString& path, Caller& caller);

}  // namespace qrv
