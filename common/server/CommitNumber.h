#pragma once

#include <common/base/Expected.h>
#include <common/base/Export.h>
#include <common/json/Value.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <vector>

namespace common {

/// Which running number the server gave to a commit.
struct CommitNumberPair {
    OdString hash;               ///< identifies the commit
    std::uint64_t commitNo = 0;  ///< the server's running number
};

/// Reads the pair of `hash` and `commitNo`. An absent key is an error that names it; a member of
/// the wrong kind throws `JsonParseError`.
QRV_COMMON_EXPORT Expected<CommitNumberPair> deserializeCommitNumber(
    const jsonlib::json::Object& record);
/// A list of them, in order; the first element that cannot be read ends the list with its error.
QRV_COMMON_EXPORT Expected<std::vector<CommitNumberPair>> deserializeCommitNumbers(
    const jsonlib::json::Array& records);

}  // namespace common
