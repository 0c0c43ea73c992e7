#include <CLI/CLI.hpp>
#include <cli/JsonOutput.h>
#include <cli/LogEntry.h>
#include <cli/Message.h>
#include <cli/Output.h>
#include <cli/Translation.h>
#include <cli/commands/Commands.h>
#include <cli/history/CommitName.h>
#include <cli/worktree/PathArgument.h>
#include <cli/worktree/PlanExecution.h>
#include <cli/worktree/Saving.h>
#include <cli/worktree/WorkingChanges.h>
#include <cli/worktree/Workspace.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace qrv_cli {

namespace {

namespace fs = std::filesystem;

struct Arguments {
    std::vector<std::string> paths;
    std::optional<std::string> from;
    std::optional<std::string> folder;
    bool dryRun = false;
    bool force = false;
    bool asJson = false;
};

/// For the parser: empty, or what is wrong with the folder.
std::string refusalOfFolder(const std::string& folder) {
    return folder.empty() ? trUtf8(L"A folder's name cannot be empty") : std::string();
}

Expected<Tree> sourceTree(Workspace& workspace, const Arguments& arguments) {
    if (!arguments.from)
        return workspace.headFiles();
    const Expected<OdString> commit =
        findCommit(workspace.history(), OdString::fromNarrow(*arguments.from), workspace.branch());
    if (!commit)
        return commit.error();
    return workspace.history().tree(*commit);
}

Expected<std::vector<OdString>> chosenFiles(const Workspace& workspace, const Tree& tree,
                                            const std::vector<std::string>& arguments) {
    std::vector<OdString> chosen;
    for (const std::string& argument : arguments) {
        const Expected<OdString> path = pathInRepository(workspace.root(), argument);
        if (!path)
            return path.error();
        chosen.push_back(*path);
        const auto isThere = [&path](const auto& file) { return isChosen(file.first, {*path}); };
        if (std::none_of(tree.begin(), tree.end(), isThere))
            return ErrorMessage{OdString::format(tr(L"'%ls' is not in the commit"),
                                                 printable(OdString::fromNarrow(argument)))};
    }
    std::vector<OdString> files;
    for (const auto& [path, file] : tree) {
        if (isChosen(path, chosen))
            files.push_back(path);
    }
    return files;
}

Expected<void> exportFile(Workspace& workspace, const OdString& path, const OdString& url,
                          const fs::path& folder, bool force) {
    const fs::path target = folder / path.toNarrow();
    std::error_code error;
    if (!force && fs::exists(fs::symlink_status(target, error)))
        return ErrorMessage{OdString::format(tr(L"'%ls' is there already (--force replaces it)"),
                                             printable(toText(target)))};
    fs::create_directories(target.parent_path(), error);
    if (error)
        return systemFailure(tr(L"'%ls' cannot be made: %ls"), toText(target.parent_path()), error);
    return workspace.storages().ofUrl(url).exportTo(workspace.root(), url, toText(target));
}

void print(const std::vector<OdString>& paths, const Arguments& arguments, Output& output) {
    if (arguments.asJson) {
        jsonlib::json::Array array;
        for (const OdString& path : paths)
            array.emplace_back(path.toWide());
        return writeJson(std::move(array), output);
    }
    for (const OdString& path : paths)
        output.write((L"  " + printable(path) + L"\n").toNarrow());
    const OdString text =
        arguments.dryRun ? tr(L"Files that would be restored: %i\n") : tr(L"Files restored: %i\n");
    output.write(OdString::format(text, paths.size()).toNarrow());
}

Expected<std::vector<OdString>> exportFiles(Workspace& workspace, const Tree& tree,
                                            const std::vector<OdString>& paths,
                                            const Arguments& arguments) {
    // There --force would replace what is kept nowhere.
    if (pathInRepository(workspace.root(), *arguments.folder))
        return ErrorMessage{
            OdString::format(tr(L"'%ls' lies in the repository (without --to, its files are "
                                L"replaced with care)"),
                             printable(OdString::fromNarrow(*arguments.folder)))};
    if (arguments.dryRun)
        return paths;
    for (const OdString& path : paths) {
        const Expected<void> done = exportFile(workspace, path, tree.at(path).url,
                                               fs::absolute(*arguments.folder), arguments.force);
        if (!done)
            return done.error();
    }
    return paths;
}

Expected<std::vector<OdString>> restoreFiles(Workspace& workspace, const Tree& tree,
                                             const std::vector<OdString>& paths,
                                             const Arguments& arguments) {
    const Expected<WorkingChanges> changes = findChanges(workspace);
    if (!changes)
        return changes.error();
    Unsaved unsaved = arguments.force ? Unsaved::store : Unsaved::refuse;
    if (arguments.force && arguments.dryRun)
        unsaved = Unsaved::leave;
    const Expected<std::vector<PlannedFile>> steps =
        stepsToTree(workspace, tree, paths, *changes, unsaved);
    if (!steps)
        return steps.error();
    std::vector<OdString> touched;
    for (const PlannedFile& step : *steps)
        touched.push_back(step.path);
    if (arguments.dryRun || touched.empty())
        return touched;
    Plan plan;
    plan.title = L"restore";
    plan.files = *steps;
    if (const Expected<void> done = carryOut(workspace, plan); !done)
        return done.error();
    logEvent(OdString::format(L"restored files: %i", touched.size()), workspace.root(),
             workspace.folder());
    return touched;
}

Expected<void> run(const Arguments& arguments, Output& output) {
    const Expected<std::unique_ptr<Workspace>> workspace =
        Workspace::open(".", Workspace::Use::change);
    if (!workspace)
        return workspace.error();
    const Expected<Tree> tree = sourceTree(**workspace, arguments);
    if (!tree)
        return tree.error();
    const Expected<std::vector<OdString>> paths = chosenFiles(**workspace, *tree, arguments.paths);
    if (!paths)
        return paths.error();
    const Expected<std::vector<OdString>> done =
        arguments.folder ? exportFiles(**workspace, *tree, *paths, arguments)
                         : restoreFiles(**workspace, *tree, *paths, arguments);
    if (!done)
        return done.error();
    print(*done, arguments, output);
    return {};
}

}  // namespace

Action declareRestore(CLI::App& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser.add_option("PATH", arguments->paths, trUtf8(L"Files and folders"))->required();
    parser
        .add_option("--from", arguments->from,
                    trUtf8(L"The commit whose versions are wanted (default: HEAD)"))
        ->type_name("COMMIT");
    parser
        .add_option("--to", arguments->folder,
                    trUtf8(L"Write them into this folder, not into the repository"))
        ->type_name("DIR")
        ->check(refusalOfFolder);
    parser.add_flag("--dry-run", arguments->dryRun, trUtf8(L"Only say what would be restored"));
    parser.add_flag("--force", arguments->force, trUtf8(L"Also replace unsaved changes"));
    parser.add_flag("--json", arguments->asJson, trUtf8(L"Print the paths as JSON"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv_cli
