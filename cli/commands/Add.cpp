#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/terminal/Message.h>
#include <cli/text/ChangeText.h>
#include <cli/text/StagingWarnings.h>
#include <common/worktree/RepoFileExplorer.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/journal/OpenTree.h>
#include <engine/paths/RelativePath.h>
#include <engine/worktree/FileWord.h>
#include <engine/worktree/PathArgument.h>
#include <engine/worktree/Staging.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace qrv::cli {

namespace {

using common::StagedFile;

struct Arguments {
    std::vector<std::string> paths;
    bool all = false;
    bool asJson = false;
};

OdString listOf(const std::vector<OdString>& paths) {
    OdString text;
    for (const OdString& path : paths)
        text += L"\n  " + printable(path);
    return text;
}

/// Why the word stands for no changed file.
ErrorMessage whyNone(const std::string& argument, const std::vector<OdString>& changed,
                     const std::vector<OdString>& unchanged, const WorkingTree& workingTree) {
    const OdString word = OdString::fromNarrow(argument);
    const Expected<std::vector<OdString>> found =
        filesOfWord(workingTree.root(), argument, unchanged);
    if (found && !found->empty())
        return {OdString::format(tr(L"'%ls' has not changed"),
                                 printable(found->size() == 1 ? found->front() : word))};
    if (const Expected<OdString> path = pathInRepository(workingTree.root(), argument); !path)
        return path.error();
    const OdString text = OdString::format(tr(L"There is no changed file '%ls'"), printable(word));
    const std::vector<OdString> near = nearPaths(word, changed);
    return {near.empty() ? text : text + tr(L"; did you mean:") + listOf(near)};
}

std::vector<OdString> pathsOf(const std::vector<StagedFile>& files) {
    std::vector<OdString> paths;
    paths.reserve(files.size());
    for (const StagedFile& file : files)
        paths.push_back(file.path);
    return paths;
}

std::vector<OdString> unchangedPaths(const WorkingChanges& changes, WorkingTree& workingTree) {
    std::vector<OdString> paths;
    for (const common::UnchangedFile& file : unchangedFiles(changes, workingTree))
        paths.push_back(file.path);
    return paths;
}

Expected<std::vector<StagedFile>> findChosen(const Arguments& arguments, WorkingTree& workingTree,
                                             const WorkingChanges& changes) {
    const common::RepoFileExplorer explorer(changes.files, workingTree.root());
    const std::vector<StagedFile> candidates = candidatesOf(explorer);
    if (arguments.all)
        return candidates;
    const std::vector<OdString> paths = pathsOf(candidates);
    std::set<OdString> chosen;
    for (const std::string& argument : arguments.paths) {
        const Expected<std::vector<OdString>> found =
            filesOfWord(workingTree.root(), argument, paths);
        if (!found)
            return found.error();
        if (found->empty())
            return whyNone(argument, paths, unchangedPaths(changes, workingTree), workingTree);
        chosen.insert(found->begin(), found->end());
    }
    std::vector<StagedFile> files;
    std::copy_if(candidates.begin(), candidates.end(), std::back_inserter(files),
                 [&chosen](const StagedFile& file) { return chosen.contains(file.path); });
    return files;
}

bool isNamed(const OdString& path, const Arguments& arguments, const WorkingTree& workingTree) {
    return std::any_of(arguments.paths.begin(), arguments.paths.end(), [&](const auto& argument) {
        const Expected<OdString> named = pathInRepository(workingTree.root(), argument);
        return named && *named == path;
    });
}

/// Leaves out files whose paths could not be used on every system, and says so: one of them in
/// a large folder must not keep the rest from being staged. One that is named itself is an
/// error.
Expected<std::vector<StagedFile>> withoutUnsafe(std::vector<StagedFile> files,
                                                const WorkingChanges& changes,
                                                const Arguments& arguments,
                                                const WorkingTree& workingTree) {
    std::set<OdString> leftOut;
    for (const StagedFile& file : files) {
        const Expected<RelativePath> path = RelativePath::check(file.path);
        if (path)
            continue;
        if (isNamed(file.path, arguments, workingTree))
            return path.error();
        printMessage(OdString::format(tr(L"Note: left out: %ls"), path.error().message));
        leftOut.insert(file.path);
        // Otherwise a commit would hold neither half of a renaming.
        if (const auto rename = changes.renames.find(file.path); rename != changes.renames.end())
            leftOut.insert(rename->second);
    }
    std::erase_if(files, [&leftOut](const auto& file) { return leftOut.contains(file.path); });
    return files;
}

void print(const std::vector<StagedFile>& files, bool asJson, Output& output) {
    if (asJson)
        return writeJson(toJson(files), output);
    for (const StagedFile& file : files)
        output.write(changeLine(file.change, file.path).toNarrow());
    output.write(OdString::format(tr(L"Staged: %i\n"), files.size()).toNarrow());
}

Expected<void> add(const Arguments& arguments, Output& output) {
    const Expected<std::unique_ptr<WorkingTree>> workingTree =
        openTree(".", Repository::Use::change, person(), WorkingTree::Scan::ahead);
    if (!workingTree)
        return workingTree.error();
    const Expected<WorkingChanges> changes = findChanges(**workingTree);
    if (!changes)
        return changes.error();
    Expected<std::vector<StagedFile>> chosen = findChosen(arguments, **workingTree, *changes);
    if (!chosen)
        return chosen.error();
    const Expected<std::vector<StagedFile>> staged =
        withoutUnsafe(withRenameHalves(*chosen, *changes), *changes, arguments, **workingTree);
    if (!staged)
        return staged.error();
    warnBeforeStaging(*staged, *changes, **workingTree);
    stage(*staged, *changes, (*workingTree)->repository().cache());
    if (Expected<void> closed = (*workingTree)->close(); !closed)
        return closed;
    print(*staged, arguments.asJson, output);
    return {};
}

}  // namespace

Action declareAdd(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    const Argument paths = parser.addOption(
        "PATH", arguments->paths,
        trUtf8(L"Files and folders, globs such as '*.dxf', or the end of a file's name"));
    const Argument all =
        parser.addFlag("--all,-a", arguments->all, trUtf8(L"Everything that has changed"));
    parser.requireOne({paths, all}, "PATH or --all");
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print the staged files as JSON"));
    return [arguments](Output& output) { return add(*arguments, output); };
}

}  // namespace qrv::cli
