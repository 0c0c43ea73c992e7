#include <cli/commands/Commands.h>

namespace qrv_cli {

std::span<const Command> commands() {
    static constexpr Command all[] = {
        {"init", "Make a repository in a folder, or complete the one that is there", declareInit},
        {"files", "List the files that the ignore rules leave", declareFiles},
        {"status", "Show the branch, the staged files and the conflicts", declareStatus},
        {"state", "Print the repository's state as JSON", declareState},
    };
    return all;
}

}  // namespace qrv_cli
