#pragma once

#include <engine/history/History.h>
#include <engine/maintenance/Findings.h>
#include <engine/repository/FindRepository.h>

namespace qrv {

/// Checks the state: by itself, against the history, and against the baseline that was kept of
/// both. `history` is null when it cannot be opened. While another process changes the repository
/// (`isBusy`), what it has written to only one of them is no damage.
void verifyState(const RepositoryPlace& place, History* history, bool isBusy, Findings& findings);

}  // namespace qrv
