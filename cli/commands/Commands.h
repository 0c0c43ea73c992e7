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
    /// In English; the catalogue may have another.
    const wchar_t* summary;
    /// Declares the command's arguments. The action is called after they were parsed.
    Action (*declare)(CLI::App& parser);
};

/// In the order in which the help lists them.
std::span<const Command> commands();

Action declareAdd(CLI::App& parser);
Action declareBranch(CLI::App& parser);
Action declareCommit(CLI::App& parser);
Action declareConfig(CLI::App& parser);
Action declareCompletion(CLI::App& parser);
Action declareConvert(CLI::App& parser);
Action declareDiff(CLI::App& parser);
Action declareFiles(CLI::App& parser);
Action declareGc(CLI::App& parser);
Action declareIgnore(CLI::App& parser);
Action declareInit(CLI::App& parser);
Action declareLocate(CLI::App& parser);
Action declareLog(CLI::App& parser);
Action declareLogNote(CLI::App& parser);
Action declareManual(CLI::App& parser);
Action declareMerge(CLI::App& parser);
Action declareName(CLI::App& parser);
Action declareProjects(CLI::App& parser);
Action declareResolve(CLI::App& parser);
Action declareRecover(CLI::App& parser);
Action declareRestore(CLI::App& parser);
Action declareShow(CLI::App& parser);
Action declareState(CLI::App& parser);
Action declareStatus(CLI::App& parser);
Action declareSwitch(CLI::App& parser);
Action declareTag(CLI::App& parser);
Action declareUnstage(CLI::App& parser);
Action declareVerify(CLI::App& parser);

}  // namespace qrv_cli
