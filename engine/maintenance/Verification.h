#pragma once

#include <platform/kernel/OdString.h>

#include <cstdint>
#include <vector>

namespace qrv {

/// What a check of a whole repository has found.
struct Verification {
    std::int64_t commits = 0;          ///< commits that were looked at
    std::int64_t objects = 0;          ///< objects that lie by themselves
    std::int64_t packedObjects = 0;    ///< objects in the pack
    std::int64_t drawingVersions = 0;  ///< versions in drawing stores

    /// What is lost or damaged, one text for each finding.
    std::vector<OdString> problems;
    /// What is worth knowing and harms nothing: an interrupted command, files that mean nothing.
    std::vector<OdString> notes;
};

}  // namespace qrv
