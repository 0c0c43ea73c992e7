#pragma once

#include <cli/shell/Command.h>

namespace qrv::cli {

class Output;

enum ExitStatus {
    kDone = 0,
    kFailed = 1,
    kWrongUsage = 2,
};

/// Does the action and finishes `output`. Whatever went wrong, also an exception, is told in one
/// line on standard error.
ExitStatus carryOut(const Action& action, Output& output);

}  // namespace qrv::cli
