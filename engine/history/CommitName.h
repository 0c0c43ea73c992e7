#pragma once

#include <common/base/Expected.h>
#include <engine/history/History.h>
#include <platform/kernel/OdString.h>

namespace qrv {

/// The hash of the commit that a person calls `name`. It is, in this order of precedence: "HEAD",
/// the commit of the branch `currentBranch`; a branch; a tag; the number of a commit, with "#"
/// before it or not; a hash, or at least four of its first digits, in any letter case.
///
/// Fails with a message that says what could be meant when the digits are not enough, and what was
/// not found; when a reference is spelled nearly so, the message asks whether that was meant. May
/// throw `DatabaseError`.
Expected<OdString> findCommit(History& history, const OdString& name,
                              const OdString& currentBranch);

}  // namespace qrv
