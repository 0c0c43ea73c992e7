#pragma once

#include <common/json/Value.h>
#include <engine/operations/RebuildHistory.h>
#include <engine/operations/Recover.h>

#include <optional>
#include <string>

namespace qrv::cli {

/// An object with "interrupted", "outcome" and "files".
jsonlib::json::Value recoveryDocument(const std::optional<InterruptedOperation>& operation,
                                      Recover what);

/// The same for a person.
std::string recoveryText(const std::optional<InterruptedOperation>& operation, Recover what);

/// An object with "commits", "references", "problems" and "setAside".
jsonlib::json::Value rebuiltDocument(const Rebuilt& rebuilt);

/// The same for a person.
std::string rebuiltText(const Rebuilt& rebuilt);

}  // namespace qrv::cli
