#pragma once

#include <common/json/Value.h>
#include <engine/maintenance/Verification.h>
#include <platform/kernel/OdString.h>

#include <string>

namespace qrv::cli {

/// An object with "root", what was counted, "problems" and "notes".
jsonlib::json::Value verificationDocument(const Verification& found, const OdString& root);

/// The same for a person.
std::string verificationText(const Verification& found, bool isQuick);

}  // namespace qrv::cli
