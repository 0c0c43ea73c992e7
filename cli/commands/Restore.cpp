#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/terminal/Message.h>
#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/history/CommitName.h>
#include <engine/journal/OpenTree.h>
#include <engine/journal/Perform.h>
#include <engine/journal/StepsToTree.h>
#include <engine/paths/Layout.h>
#include <engine/paths/PathParts.h>
#include <engine/paths/RelativePath.h>
#include <engine/repository/LogEntry.h>
#include <engine/worktree/PathArgument.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace qrv::cli {

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

Expected<Tree> sourceTree(WorkingTree& workingTree, const Arguments& arguments) {
    if (!arguments.from)
        return workingTree.repository().headFiles();
    const Expected<OdString> commit =
        findCommit(workingTree.repository().history(), OdString::fromNarrow(*arguments.from),
                   workingTree.repository().branch());
    if (!commit)
        return commit.error();
    return workingTree.repository().history().tree(*commit);
}

Expected<std::vector<OdString>> chosenFiles(const WorkingTree& workingTree, const Tree& tree,
                                            const std::vector<std::string>& arguments) {
    std::vector<OdString> chosen;
    for (const std::string& argument : arguments) {
        const Expected<OdString> path = pathInRepository(workingTree.root(), argument);
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

/// A folder elsewhere that files are written to, beneath one handle.
struct Target {
    fs::path path;
    sys::Folder folder;
};

Expected<Target> openTarget(const std::string& folder) {
    const fs::path path = fs::absolute(folder);
    std::error_code error;
    fs::create_directories(path, error);
    if (error)
        return systemFailure(tr(L"'%ls' cannot be made: %ls"), toText(path), error);
    sys::Outcome<sys::Folder> opened = sys::Folder::open(path.native());
    if (!opened)
        return systemFailure(tr(L"'%ls' cannot be opened: %ls"), toText(path), opened.error());
    return Target{.path = path, .folder = std::move(*opened)};
}

Expected<void> exportFile(WorkingTree& workingTree, const OdString& path, const OdString& url,
                          const Target& target, bool force) {
    const Expected<RelativePath> safe = RelativePath::check(path);
    if (!safe)
        return safe.error();
    if (!force && target.folder.status(safe->bytes()))
        return ErrorMessage{OdString::format(tr(L"'%ls' is there already (--force replaces it)"),
                                             printable(toText(target.path / safe->bytes())))};
    const auto existing = force ? sys::NewFile::Existing::replace : sys::NewFile::Existing::keep;
    return workingTree.repository().storages().ofUrl(url).exportBelow(
        workingTree.root(), url, target.folder, *safe, existing);
}

/// Elsewhere they would make a folder pass for a repository that has lost its history.
bool belongsToRepository(const OdString& path) {
    const OdString prefix = OdString(layout::metadataFolder) + L'/';
    return path.left(prefix.getLength()) == prefix;
}

/// Whoever names one of these and nothing else wants to know why it does not come.
bool isNamed(const OdString& path, const Arguments& arguments) {
    return std::find(arguments.paths.begin(), arguments.paths.end(), path.toNarrow()) !=
           arguments.paths.end();
}

Expected<std::vector<OdString>> exportedFiles(const std::vector<OdString>& paths,
                                              const Arguments& arguments) {
    std::vector<OdString> exported;
    std::copy_if(paths.begin(), paths.end(), std::back_inserter(exported),
                 [](const OdString& path) { return !belongsToRepository(path); });
    if (exported.empty() && isNamed(paths.front(), arguments))
        return ErrorMessage{
            OdString::format(tr(L"'%ls' belongs to the repository and is not written anywhere else "
                                L"(qrv show prints it)"),
                             printable(paths.front()))};
    const std::size_t left = paths.size() - exported.size();
    if (left > 0)
        printMessage(OdString::format(
            tr(L"Note: files left out because they belong to the repository: %i"), left));
    return exported;
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

Expected<std::vector<OdString>> exportFiles(WorkingTree& workingTree, const Tree& tree,
                                            const std::vector<OdString>& paths,
                                            const Arguments& arguments) {
    // There --force would replace what is kept nowhere.
    if (pathInRepository(workingTree.root(), *arguments.folder))
        return ErrorMessage{
            OdString::format(tr(L"'%ls' lies in the repository (without --to, its files are "
                                L"replaced with care)"),
                             printable(OdString::fromNarrow(*arguments.folder)))};
    Expected<std::vector<OdString>> exported = exportedFiles(paths, arguments);
    if (!exported || arguments.dryRun)
        return exported;
    const Expected<Target> target = openTarget(*arguments.folder);
    if (!target)
        return target.error();
    for (const OdString& path : *exported) {
        const Expected<void> done =
            exportFile(workingTree, path, urlIn(tree, path), *target, arguments.force);
        if (!done)
            return done.error();
    }
    return exported;
}

Expected<std::vector<OdString>> restoreFiles(WorkingTree& workingTree, const Tree& tree,
                                             const std::vector<OdString>& paths,
                                             const Arguments& arguments) {
    const Expected<WorkingChanges> changes = findChanges(workingTree);
    if (!changes)
        return changes.error();
    Unsaved unsaved = arguments.force ? Unsaved::store : Unsaved::refuse;
    if (arguments.force && arguments.dryRun)
        unsaved = Unsaved::leave;
    const Expected<std::vector<TreeStep>> steps =
        stepsToTree(workingTree, tree, paths, *changes, unsaved);
    if (!steps)
        return steps.error();
    std::vector<OdString> touched;
    for (const TreeStep& step : *steps)
        touched.push_back(step.path);
    if (arguments.dryRun || touched.empty())
        return touched;
    JournalEntry entry;
    entry.title = L"restore";
    entry.steps = *steps;
    if (const Expected<void> done = perform(workingTree, entry, *changes); !done)
        return done.error();
    logEvent(OdString::format(L"restored files: %i", touched.size()), workingTree.root(),
             workingTree.folder(), person());
    return touched;
}

Expected<void> run(const Arguments& arguments, Output& output) {
    // Elsewhere nothing of the repository changes, and what is made is the person's own.
    const Expected<std::unique_ptr<WorkingTree>> workingTree =
        openTree(".", arguments.folder ? Repository::Use::look : Repository::Use::change, person());
    if (!workingTree)
        return workingTree.error();
    const Expected<Tree> tree = sourceTree(**workingTree, arguments);
    if (!tree)
        return tree.error();
    const Expected<std::vector<OdString>> paths =
        chosenFiles(**workingTree, *tree, arguments.paths);
    if (!paths)
        return paths.error();
    const Expected<std::vector<OdString>> done =
        arguments.folder ? exportFiles(**workingTree, *tree, *paths, arguments)
                         : restoreFiles(**workingTree, *tree, *paths, arguments);
    if (!done)
        return done.error();
    print(*done, arguments, output);
    return {};
}

}  // namespace

Action declareRestore(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser.addOption("PATH", arguments->paths, trUtf8(L"Files and folders")).required();
    parser
        .addOption("--from", arguments->from,
                   trUtf8(L"The commit whose versions are wanted (default: HEAD)"))
        .placeholder("COMMIT");
    parser
        .addOption("--to", arguments->folder,
                   trUtf8(L"Write them into this folder, not into the repository"))
        .placeholder("DIR")
        .check(refusalOfFolder);
    parser.addFlag("--dry-run", arguments->dryRun, trUtf8(L"Only say what would be restored"));
    parser.addFlag("--force", arguments->force, trUtf8(L"Also replace unsaved changes"));
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print the paths as JSON"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
