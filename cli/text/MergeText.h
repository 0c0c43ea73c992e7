#pragma once

#include <common/json/Value.h>
#include <engine/operations/Merge.h>
#include <platform/kernel/OdString.h>

namespace qrv::cli {

/// An object with "result", "files", "conflicts" and, when one was made or reached, "commit".
jsonlib::json::Value mergeDocument(const Merged& merged);

/// What became of merging `name`, which is printable, in one line for a person.
OdString mergeText(const Merged& merged, const OdString& name);

}  // namespace qrv::cli
