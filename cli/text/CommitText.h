#pragma once

#include <common/json/Value.h>
#include <engine/history/CommitEntry.h>
#include <platform/kernel/OdString.h>

namespace qrv::cli {

/// The first line of the message.
OdString titleOf(const CommitEntry& commit);

/// An object with "number", "hash", "parents", "author", "message" and "time", the latter as
/// "2024-03-05T14:07:09Z".
jsonlib::json::Object toJson(const CommitEntry& commit);

}  // namespace qrv::cli
