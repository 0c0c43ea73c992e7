#pragma once

#include <engine/maintenance/Collected.h>
#include <engine/maintenance/PackingPlan.h>
#include <engine/repository/Repository.h>
#include <platform/kernel/OdString.h>

#include <vector>

namespace qrv {

/// What came of it.
struct Repacked {
    /// The named contents that are in new packs now.
    Amount packed;
    /// Of each holder, whether all that is needed of it lies elsewhere now.
    std::vector<bool> isFree;
    /// Of each item, whether it lies in a pack now, and was read back from there.
    std::vector<bool> isPacked;
};

/// Writes what the plan says into new packs, each of at most some gigabyte, and reads each back.
/// Nothing is removed. What cannot be read stays where it is, with all that lies there, and
/// `problems` tells why. Memory does not grow with the length of what is packed.
Repacked repack(Repository& repository, const Holdings& holdings, const PackingPlan& plan,
                std::vector<OdString>& problems);

}  // namespace qrv
