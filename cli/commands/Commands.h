#pragma once

#include <common/base/Expected.h>

#include <functional>
#include <span>

namespace CLI {
class App;
}

namespace qrv_cli {

class Output;

/// What a command does once its arguments are known: writes its results, or fails with a message.
using Action = std::function<Expected<void>(Output&)>;

struct Command {
    const char* name;
    const char* summary;
    /// Declares the command's arguments. The action is called after they were parsed.
    Action (*declare)(CLI::App& parser);
};

/// In the order in which the help lists them.
std::span<const Command> commands();

Action declareFiles(CLI::App& parser);
Action declareInit(CLI::App& parser);
Action declareState(CLI::App& parser);
Action declareStatus(CLI::App& parser);

}  // namespace qrv_cli
