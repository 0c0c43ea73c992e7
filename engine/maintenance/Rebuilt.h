#pragma once

#include <platform/kernel/OdString.h>

#include <cstdint>
#include <vector>

namespace qrv {

/// What was made anew.
struct Rebuilt {
    /// Commits that the history lacked.
    std::int64_t commits = 0;
    /// Branches and tags that it lacked, or that pointed elsewhere.
    std::int64_t references = 0;
    /// Where the damaged history lies now, below the root; empty when it was whole or missing.
    OdString setAside;
    /// What could not be made anew, one text for each finding.
    std::vector<OdString> problems;
};

}  // namespace qrv
