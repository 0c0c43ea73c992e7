#pragma once

#include <engine/history/CommitEntry.h>
#include <engine/tree/FileDelta.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <vector>

namespace qrv {

/// A commit to be made.
struct NewCommit {
    std::vector<OdString> parents;
    OdString author;
    OdString message;
    /// In the years 1 to 9999.
    std::int64_t timeSeconds = 0;
    /// In any order, one for each path. A renamed file needs none for its old path.
    std::vector<FileDelta> deltas;
};

/// The hash of a commit: the SHA-256 digest of its record in the form in which it is sent to a
/// server, without the hash itself. A removed file stands in it with an empty storage path. Equal
/// commits on equal histories have equal hashes, and a change of any of them changes all that build
/// on it.
OdString hashOf(const NewCommit& commit);

}  // namespace qrv
