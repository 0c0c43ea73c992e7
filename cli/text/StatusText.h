#pragma once

#include <common/json/Value.h>
#include <engine/operations/Status.h>

#include <string>

namespace qrv::cli {

/// An object with "root", "branch", "commit", "merging", "files", "staged", "unstaged", "renames",
/// "conflicts" and "unseen"; what is not there is left out.
jsonlib::json::Value statusDocument(const Status& status);

/// The same for a person.
std::string statusText(const Status& status);

}  // namespace qrv::cli
