#pragma once

#include <common/base/Expected.h>
#include <common/state/State.h>
#include <engine/worktree/BaselineBytes.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

#include <memory>
#include <optional>
#include <system_error>

namespace qrv {

/// What of a state and the files of HEAD is kept; the state file has been read in that version.
KeptBaseline toKept(const common::State& state, const sys::FileStamp& stateFile,
                    const OdString& headCommit, std::shared_ptr<const Baseline> baseline);

/// Nothing when there is none, or one of a later program. Fails when it cannot be read or is
/// damaged.
Expected<std::optional<KeptBaseline>> readBaseline(const sys::Folder& root);

/// Tells that it is damaged.
ErrorMessage damagedBaseline();

/// Puts it in place of the old one, which stays when this fails. It is not flushed: what a crash
/// damages is noticed when it is read.
std::error_code writeBaseline(const KeptBaseline& kept, const sys::Folder& root);

}  // namespace qrv
