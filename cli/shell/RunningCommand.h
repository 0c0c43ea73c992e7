#pragma once

#include <string>

namespace qrv_cli {

/// The word by which this process was told what to do, such as "commit", for the records that name
/// it; empty before the command line was read.
const std::string& runningCommand();
void setRunningCommand(const std::string& name);

}  // namespace qrv_cli
