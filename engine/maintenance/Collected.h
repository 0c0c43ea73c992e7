#pragma once

#include <platform/kernel/OdString.h>

#include <cstdint>
#include <vector>

namespace qrv {

/// Files or stored versions, and how many bytes they hold.
struct Amount {
    std::int64_t count = 0;      ///< how many they are
    std::int64_t sizeBytes = 0;  ///< what they hold together

    friend bool operator==(const Amount&, const Amount&) = default;
};

/// What was collected, or would be.
struct Collected {
    /// Objects that moved into the pack; their contents' bytes.
    Amount packed;
    /// Objects that were forgotten.
    Amount droppedObjects;
    /// Drawing versions that were forgotten; their contents' bytes.
    Amount droppedDrawingVersions;
    /// Unfinished files of killed processes.
    Amount leftovers;
    /// What objects, pack and drawing stores take on the disk.
    std::int64_t sizeBefore = 0;
    /// The same afterwards.
    std::int64_t sizeAfter = 0;
    /// What could not be collected because it is damaged or cannot be changed; it stays as it is.
    std::vector<OdString> problems;
};

}  // namespace qrv
