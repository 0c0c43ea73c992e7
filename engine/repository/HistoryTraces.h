#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <platform/kernel/OdString.h>
#include <sys/Folder.h>

#include <optional>

namespace qrv {

/// What shows that a repository without a history once had one: the path, below the root, of a file
/// that no command makes before the history. Nothing in a new repository. Fails when nobody could
/// look.
Expected<std::optional<OdString>> traceOfHistory(const common::RootPath& root,
                                                 const sys::Folder& folder);

/// Fails when the history is missing or empty although the repository once had one: it must not
/// pass for a new one, in which the next commit would be the first and nothing that was kept would
/// be needed.
Expected<void> checkHistoryIsThere(const common::RootPath& root, const sys::Folder& folder);

}  // namespace qrv
