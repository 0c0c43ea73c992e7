#pragma once

#include <engine/repository/MetadataFiles.h>
#include <engine/repository/Repository.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace qrv {

/// An object that is to be packed.
struct PackCandidate {
    std::string digest;
    std::int64_t sizeBytes = 0;
    /// The digest of an earlier version of the same file, which comes before it in the list or is
    /// packed already; nothing when there is none.
    std::optional<std::string> base;
};

/// The objects that a commit names and that are in no tree of `needed`, in the order in which they
/// came into the history. `needed` holds storage URLs. May throw `DatabaseError`.
std::vector<PackCandidate> packCandidates(Repository& repository,
                                          const std::vector<MetadataFile>& objects,
                                          const std::set<OdString>& needed);

/// Packs the objects and removes their plain files: a batch at a time, and the files of a batch
/// when the pack with it is on the disk and each object was read back. One that cannot be packed
/// stays plain, and `problems` tells why. Gives those that were packed. May throw `DatabaseError`;
/// what was packed until then stays so.
std::vector<PackCandidate> packObjects(Repository& repository,
                                       const std::vector<PackCandidate>& candidates,
                                       std::vector<OdString>& problems);

}  // namespace qrv
