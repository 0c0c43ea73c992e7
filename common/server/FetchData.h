#pragma once

#include <common/base/Expected.h>
#include <common/base/Export.h>
#include <common/json/Value.h>
#include <common/server/Commit.h>
#include <common/server/Reference.h>
#include <common/server/RepoData.h>

#include <vector>

namespace common {

/// The result of a fetch: a repository with its references and its new commits, in the server's
/// order.
struct FetchData {
    RepoData repository;                ///< what was fetched from
    std::vector<Reference> references;  ///< in the server's order
    std::vector<Commit> commits;        ///< the new ones, in the server's order
};

/// Reads the result of a fetch. "references" and "commits" may be absent, but not "references"
/// alone. An absent key or the first bad element is an error; a member of the wrong kind throws
/// `JsonParseError`. Nothing partial is returned.
QRV_COMMON_EXPORT Expected<FetchData> deserializeFetchData(jsonlib::json::Object record);

}  // namespace common
