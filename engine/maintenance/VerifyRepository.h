#pragma once

#include <engine/base/Caller.h>
#include <engine/maintenance/StoredVersionsCheck.h>
#include <engine/maintenance/Verification.h>
#include <engine/repository/FindRepository.h>

namespace qrv {

/// Reads everything that the repository stores: each object and drawing version against its digest,
/// the pack, the history with its hashes, the state, and whether every version that a commit names
/// is there. The working files are not looked at. With `CheckDepth::structure` no stored contents
/// are read: what is damaged in itself is not found, but what is missing.
///
/// Changes nothing; but what a killed process had begun to write to one of the databases is rolled
/// back by whoever opens it next, and that may be this. An interrupted command stays interrupted.
Verification verifyRepository(const RepositoryPlace& place, CheckDepth depth, Caller& caller);

}  // namespace qrv
