#pragma once

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

}  // namespace qrv
