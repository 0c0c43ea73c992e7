#pragma once

#include <engine/history/History.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <functional>
#include <map>
#include <vector>

namespace qrv {

/// Who names a stored version: the first that does.
struct VersionName {
    OdString path;
    /// The number of the commit; 0 when the entry of an interrupted command names it.
    std::int64_t commit = 0;
};

/// Who names them, by their storage URLs.
using NamedVersions = std::map<OdString, VersionName>;

/// The numbers of all commits, ascending. Throws `DatabaseError`.
std::vector<std::int64_t> commitNumbers(History& history);

/// Every version that a commit or a noted entry names. What the history cannot tell is left out,
/// and `onError` is told why.
NamedVersions namedVersions(History& history, const std::function<void(const OdString&)>& onError);

}  // namespace qrv
