#pragma once

#include <engine/history/History.h>
#include <engine/maintenance/Findings.h>
#include <sys/Folder.h>

namespace qrv {

/// Checks the records beneath the root from which a lost history is made anew: whether they are
/// whole, and know what the history knows. May throw `DatabaseError`.
void verifyRecords(History& history, const sys::Folder& folder, Findings& findings);

}  // namespace qrv
