#pragma once

#include <common/base/Expected.h>
#include <engine/base/Caller.h>
#include <engine/base/Export.h>
#include <platform/kernel/OdString.h>

#include <optional>
#include <string>
#include <vector>

namespace qrv {

/// What is done with what an interrupted command left.
enum class Recover {
    look,    ///< nothing
    settle,  ///< it is finished or rolled back, whichever it is made for
    forget,  ///< the working files stay as they are, and it is forgotten
};

/// What an interrupted command left.
struct InterruptedOperation {
    /// What the person had asked for: "switch side".
    OdString title;
    /// Whether it is finished; otherwise it is rolled back.
    bool isFinished = true;
    /// The files that it had to change, in the order of its steps.
    std::vector<OdString> files;
};

/// Gives what an interrupted command had left, if there was any, after that is done with it. Fails
/// when it cannot be trusted or cannot be done, with a message that says why; it stays noted then.
QRV_ENGINE_EXPORT Expected<std::optional<InterruptedOperation>> recover(const std::string& folder,
                                                                        Recover what,
                                                                        Caller& caller);

}  // namespace qrv
