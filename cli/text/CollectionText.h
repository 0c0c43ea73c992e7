#pragma once

#include <common/json/Value.h>
#include <engine/maintenance/Collected.h>

#include <string>

namespace qrv::cli {

/// An object with what was packed, dropped and removed, or would be, and "problems".
jsonlib::json::Value collectionDocument(const Collected& collected, bool onlyLook);

/// The same for a person, without the problems.
std::string collectionText(const Collected& collected, bool onlyLook);

}  // namespace qrv::cli
