#pragma once

#include <common/base/Expected.h>
#include <common/base/Export.h>
#include <platform/kernel/OdString.h>

#include <vector>

namespace common {

/// A repository as the server describes it.
struct RepoData {
    OdString name;         ///< to show
    OdString id;           ///< the server's identifier, a text also where it looks like a number
    OdString description;  ///< no record of the server fills it
};

/// Reads `{"name": ..., "id": ...}`. An absent key is an error that names it. A member that is no
/// text throws `JsonParseError`, as does a text that is no JSON object, or no JSON at all; one cut
/// off inside a string throws `std::length_error`.
QRV_COMMON_EXPORT Expected<RepoData> deserializeRepoData(const OdString& text);
/// A list of them, in the text's order. The first element that cannot be read ends the list with
/// its error. A text that is no JSON array throws `JsonParseError`, one cut off inside a string
/// `std::length_error`.
QRV_COMMON_EXPORT Expected<std::vector<RepoData>> deserializeRepoDatas(const OdString& text);

}  // namespace common
