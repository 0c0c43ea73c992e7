#pragma once

#include <common/base/Expected.h>
#include <engine/base/Caller.h>
#include <engine/base/Export.h>
#include <platform/kernel/OdString.h>

#include <string>

namespace qrv {

/// Adds a line to the activity log of the repository that holds `folder`, behind the time. Fails
/// for a note that is empty or more than one line of plain text, and when the repository cannot be
/// opened or the log not be written.
QRV_ENGINE_EXPORT Expected<void> addLogNote(const std::string& folder, const OdString& note,
                                            Caller& caller);

}  // namespace qrv
