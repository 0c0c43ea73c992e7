#include <cli/shell/RunningCommand.h>

namespace qrv_cli {

namespace {

std::string& command() {
    static std::string name;
    return name;
}

}  // namespace

const std::string& runningCommand() {
    return command();
}

void setRunningCommand(const std::string& name) {
    command() = name;
}

}  // namespace qrv_cli
