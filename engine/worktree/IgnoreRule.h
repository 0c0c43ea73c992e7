#pragma once

#include <platform/kernel/OdString.h>

namespace qrv {

/// A rule in force.
struct IgnoreRule {
    /// Counted from 1.
    int line = 0;
    /// As it stands in the file.
    OdString text;
};

/// Why a path is left out.
struct IgnoreReason {
    /// What a rule matches: the path itself, or a folder above it.
    OdString path;
    /// The first rule that does; 0 and empty for the metadata folder, which needs none.
    int line = 0;
    /// As it stands in the file.
    OdString rule;
};

}  // namespace qrv
