#pragma once

#include <common/json/Value.h>
#include <common/state/ConflictData.h>
#include <platform/kernel/OdString.h>

#include <vector>

namespace qrv::cli {

/// One line a conflict: the path, and what happened to it on either side.
OdString conflictLines(const std::vector<common::ConflictData>& conflicts);

/// A list of objects with "path", "local" and "remote", the latter two as in the state file.
jsonlib::json::Array toJson(const std::vector<common::ConflictData>& conflicts);

}  // namespace qrv::cli
