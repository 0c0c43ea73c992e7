#pragma once

#include <common/base/Expected.h>
#include <engine/worktree/BaselineBytes.h>
#include <sys/Folder.h>

#include <optional>
#include <system_error>

namespace qrv {

/// Nothing when there is none, or one of another program. Fails when it cannot be read or is
/// damaged.
Expected<std::optional<KeptBaseline>> readBaseline(const sys::Folder& root);

/// The same of its first bytes alone, where damage is not told.
std::optional<BaselineHeading> readBaselineHeading(const sys::Folder& root);

/// Tells that it is damaged.
ErrorMessage damagedBaseline();

/// Puts it in place of the old one, which stays when this fails.
std::error_code writeBaseline(const HeadChange& last, const Baseline& baseline,
                              const sys::Folder& root);

}  // namespace qrv
