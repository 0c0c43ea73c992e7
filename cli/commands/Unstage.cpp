#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/text/ChangeText.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/journal/OpenTree.h>
#include <engine/worktree/FileWord.h>
#include <engine/worktree/PathArgument.h>
#include <engine/worktree/Staging.h>
#include <engine/worktree/WorkingTree.h>

#include <memory>
#include <string>
#include <vector>

namespace qrv::cli {

namespace {

struct Arguments {
    std::vector<std::string> paths;
    bool all = false;
    bool asJson = false;
};

ErrorMessage whyNone(const std::string& argument, const WorkingTree& workingTree) {
    const Expected<OdString> path = pathInRepository(workingTree.root(), argument);
    return path ? ErrorMessage{OdString::format(tr(L"'%ls' is not staged"), printable(*path))}
                : path.error();
}

Expected<std::vector<OdString>> chosenPaths(const Arguments& arguments,
                                            const WorkingTree& workingTree) {
    if (arguments.all)
        return std::vector<OdString>{OdString()};
    std::vector<OdString> staged;
    for (const common::StagedFile& file : workingTree.repository().stateWithoutIndex().stagedFiles)
        staged.push_back(file.path);
    std::vector<OdString> chosen;
    for (const std::string& argument : arguments.paths) {
        const Expected<std::vector<OdString>> found =
            filesOfWord(workingTree.root(), argument, staged);
        if (!found)
            return found.error();
        if (found->empty())
            return whyNone(argument, workingTree);
        chosen.insert(chosen.end(), found->begin(), found->end());
    }
    return chosen;
}

Expected<void> run(const Arguments& arguments, Output& output) {
    const Expected<std::unique_ptr<WorkingTree>> workingTree =
        openTree(".", Repository::Use::change, person());
    if (!workingTree)
        return workingTree.error();
    const Expected<std::vector<OdString>> chosen = chosenPaths(arguments, **workingTree);
    if (!chosen)
        return chosen.error();
    const std::vector<common::StagedFile> files =
        unstage(*chosen, (*workingTree)->repository().cache());
    if (Expected<void> closed = (*workingTree)->close(); !closed)
        return closed;
    if (arguments.asJson)
        writeJson(toJson(files), output);
    else
        output.write(OdString::format(tr(L"Taken off the stage: %i\n"), files.size()).toNarrow());
    return {};
}

}  // namespace

Action declareUnstage(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    const Argument paths = parser.addOption(
        "PATH", arguments->paths,
        trUtf8(L"Staged files, folders of them, globs, or the end of a file's name"));
    const Argument all = parser.addFlag("--all,-a", arguments->all, trUtf8(L"Everything"));
    parser.requireOne({paths, all}, "PATH or --all");
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print the files as JSON"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
