#pragma once

#include <cli/user/Settings.h>
#include <engine/operations/Add.h>

#include <cstdint>

namespace qrv::cli {

/// From which size on a file is worth a note; 0 when none is.
std::int64_t largeFileBytes(const Settings& settings);

/// Tells, as notes on standard error, what a person should know before these files are committed: a
/// file or a whole commit that is very large (the limits are settings), names that differ from
/// another only in letter case or Unicode form, names that Windows cannot hold, and drawings that
/// somebody has open now.
void warnOfStaged(const Added& added, const Settings& settings);

}  // namespace qrv::cli
