#pragma once

#include <common/repository/RootPath.h>
#include <engine/base/Caller.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <vector>

namespace qrv {

/// What a check of a whole repository has found.
struct Verification {
    // How much was looked at.
    std::int64_t commits = 0;
    std::int64_t objects = 0;
    std::int64_t packedObjects = 0;
    std::int64_t drawingVersions = 0;

    /// What is lost or damaged, one text for each finding.
    std::vector<OdString> problems;
    /// What is worth knowing and harms nothing: an interrupted command, files that mean nothing.
    std::vector<OdString> notes;
};

/// Reads everything that the repository stores: each object and drawing version against its digest,
/// the pack, the history with its hashes, the state, and whether every version that a commit names
/// is there. The working files are not looked at.
///
/// Changes nothing; but what a killed process had begun to write to one of the databases is taken
/// back by whoever opens it next, and that may be this. An interrupted command stays interrupted.
Verification verifyRepository(const common::RootPath& root, Caller& caller);

}  // namespace qrv
