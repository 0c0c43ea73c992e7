#include <CLI/CLI.hpp>
#include <cli/JsonOutput.h>
#include <cli/Message.h>
#include <cli/Output.h>
#include <cli/Translation.h>
#include <cli/commands/Commands.h>
#include <cli/commands/RequireOne.h>
#include <cli/worktree/ChangeText.h>
#include <cli/worktree/PathArgument.h>
#include <cli/worktree/Staging.h>
#include <cli/worktree/Workspace.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace qrv_cli {

namespace {

struct Arguments {
    std::vector<std::string> paths;
    bool all = false;
    bool asJson = false;
};

Expected<std::vector<OdString>> chosenPaths(const Arguments& arguments,
                                            const Workspace& workspace) {
    if (arguments.all)
        return std::vector<OdString>{OdString()};
    std::vector<OdString> chosen;
    for (const std::string& argument : arguments.paths) {
        const Expected<OdString> path = pathInRepository(workspace.root(), argument);
        if (!path)
            return path.error();
        const auto isStaged = [&path](const common::StagedFile& file) {
            return isChosen(file.path, {*path});
        };
        const std::vector<common::StagedFile>& staged = workspace.stateWithoutIndex().stagedFiles;
        if (std::none_of(staged.begin(), staged.end(), isStaged))
            return ErrorMessage{OdString::format(tr(L"'%ls' is not staged"), printable(*path))};
        chosen.push_back(*path);
    }
    return chosen;
}

Expected<void> run(const Arguments& arguments, Output& output) {
    const Expected<std::unique_ptr<Workspace>> workspace =
        Workspace::open(".", Workspace::Use::change);
    if (!workspace)
        return workspace.error();
    const Expected<std::vector<OdString>> chosen = chosenPaths(arguments, **workspace);
    if (!chosen)
        return chosen.error();
    const std::vector<common::StagedFile> files = unstage(*chosen, (*workspace)->cache());
    if (Expected<void> closed = (*workspace)->close(); !closed)
        return closed;
    if (arguments.asJson)
        writeJson(toJson(files), output);
    else
        output.write(OdString::format(tr(L"Taken off the stage: %i\n"), files.size()).toNarrow());
    return {};
}

}  // namespace

Action declareUnstage(CLI::App& parser) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::Option* const paths =
        parser.add_option("PATH", arguments->paths, trUtf8(L"Staged files, or folders of them"));
    CLI::Option* const all = parser.add_flag("--all,-a", arguments->all, trUtf8(L"Everything"));
    requireOne(parser, {paths, all}, "PATH or --all");
    parser.add_flag("--json", arguments->asJson, trUtf8(L"Print the files as JSON"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv_cli
