#pragma once

#include <common/base/Expected.h>
#include <engine/base/Caller.h>
#include <engine/base/Export.h>
#include <engine/history/CommitEntry.h>
#include <platform/kernel/OdString.h>

#include <string>

namespace qrv {

/// What a person says of a commit.
struct CommitRequest {
    /// Who did it.
    OdString author;
    /// What was done; blanks around it do not count.
    OdString message;
};

/// A commit that was made.
struct Committed {
    /// As it is in the history.
    CommitEntry commit;
    /// The branch that it went to.
    OdString branch;
};

/// Stores the staged files and makes a commit of them on the current branch; while a merge is going
/// on, the commit that was merged becomes its second parent.
///
/// The caller may interrupt it as long as nothing is in the history, and then nothing is left;
/// later it goes on to its end. Fails then, without a message, when a conflict is open, when
/// nothing is staged that differs from HEAD (unless a merge is going on), when a staged file cannot
/// be looked at or stored, and when the repository cannot be opened or changed; nothing is
/// committed then, and files that were stored are only not needed.
QRV_ENGINE_EXPORT Expected<Committed> commit(const std::string& folder,
                                             const CommitRequest& request, Caller& caller);

}  // namespace qrv
