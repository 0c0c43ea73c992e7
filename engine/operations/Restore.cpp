#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/history/CommitName.h>
#include <engine/journal/Perform.h>
#include <engine/journal/StepsToTree.h>
#include <engine/operations/Restore.h>
#include <engine/operations/WithRepositoryInternal.h>
#include <engine/paths/Layout.h>
#include <engine/paths/PathParts.h>
#include <engine/repository/LogEntry.h>
#include <engine/worktree/PathArgument.h>
#include <engine/worktree/WorkingChanges.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

namespace qrv {

namespace {

namespace fs = std::filesystem;
using Paths = Expected<std::vector<OdString>>;

/// The files of a commit, of which most often few are asked for.
class Source {
public:
    /// Without a commit, those of HEAD.
    Source(History& history, std::optional<OdString> commit)
        : history_(history), commit_(std::move(commit)) {}

    /// The file of that path, or those below that folder; all of them for the empty path.
    Tree filesOf(const OdString& path) {
        Tree tree;
        if (const Expected<RelativePath> checked = RelativePath::check(path)) {
            const std::optional<TreeFile> file = fileOf(path);
            if (file)
                tree.emplace(*checked, *file);
        }
        if (!tree.empty())
            return tree;
        if (!commit_ && !path.isEmpty()) {
            for (const OdString& below : history_.headPathsBelow(path)) {
                if (std::optional<HeadFile> file = history_.headFile(below))
                    tree.emplace(std::move(file->path), std::move(file->file));
            }
            return tree;
        }
        for (const auto& file : whole()) {
            if (isChosen(file.first, {path}))
                tree.insert(tree.end(), file);
        }
        return tree;
    }

private:
    std::optional<TreeFile> fileOf(const OdString& path) {
        if (commit_)
            return history_.fileAt(*commit_, path);
        const std::optional<HeadFile> file = history_.headFile(path);
        return file ? std::optional(file->file) : std::nullopt;
    }

    const Tree& whole() {
        if (!whole_)
            whole_ = commit_ ? history_.tree(*commit_) : history_.headFiles();
        return *whole_;
    }

    History& history_;
    std::optional<OdString> commit_;
    std::optional<Tree> whole_;
};

Expected<Source> sourceOf(Repository& repository, const RestoreRequest& request) {
    if (!request.commit)
        return Source(repository.history(), std::nullopt);
    const Expected<OdString> commit =
        findCommit(repository.history(), *request.commit, repository.branch());
    if (!commit)
        return commit.error();
    return Source(repository.history(), *commit);
}

/// The files that are asked for.
Expected<Tree> chosenFiles(Repository& repository, const RestoreRequest& request) {
    Expected<Source> source = sourceOf(repository, request);
    if (!source)
        return source.error();
    Tree chosen;
    for (const std::string& argument : request.paths) {
        const Expected<OdString> path = pathInRepository(repository.root(), argument);
        if (!path)
            return path.error();
        Tree files = source->filesOf(*path);
        if (files.empty())
            return ErrorMessage{OdString::format(tr(L"'%ls' is not in the commit"),
                                                 printable(OdString::fromNarrow(argument)))};
        chosen.merge(files);
    }
    return chosen;
}

std::vector<OdString> pathsOf(const Tree& tree) {
    std::vector<OdString> paths;
    paths.reserve(tree.size());
    for (const auto& [path, file] : tree)
        paths.push_back(path);
    return paths;
}

Paths restore(WorkingTree& workingTree, const RestoreRequest& request) {
    const Expected<Tree> tree = chosenFiles(workingTree.repository(), request);
    if (!tree)
        return tree.error();
    const Expected<WorkingChanges> changes = findChangesOf(workingTree, pathsOf(*tree));
    if (!changes)
        return changes.error();
    Unsaved unsaved = request.force ? Unsaved::store : Unsaved::refuse;
    if (request.force && request.dryRun)
        unsaved = Unsaved::leave;
    Expected<std::vector<TreeStep>> steps =
        stepsToTree(workingTree, *tree, pathsOf(*tree), *changes, unsaved);
    if (!steps)
        return steps.error();
    std::vector<OdString> touched;
    for (const TreeStep& step : *steps)
        touched.push_back(step.path);
    if (request.dryRun || touched.empty())
        return touched;
    JournalEntry entry;
    entry.title = L"restore";
    entry.steps = std::move(*steps);
    if (const Expected<void> done = perform(workingTree, entry, *changes); !done)
        return done.error();
    logEvent(OdString::format(L"restored files: %i", touched.size()), workingTree.root(),
             workingTree.folder(), workingTree.caller());
    return touched;
}

OdString toText(const fs::path& path) {
    return OdString::fromNarrow(path.native());
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

Expected<void> exportFile(Repository& repository, const RelativePath& path, const OdString& url,
                          const Target& target, bool force) {
    if (!force && target.folder.status(path.bytes()))
        return ErrorMessage{OdString::format(tr(L"'%ls' is there already (--force replaces it)"),
                                             printable(toText(target.path / path.bytes())))};
    const auto existing = force ? sys::NewFile::Existing::replace : sys::NewFile::Existing::keep;
    return repository.storages().ofUrl(url).exportBelow(repository.root(), url, target.folder, path,
                                                        existing);
}

/// Elsewhere they would make a folder pass for a repository that has lost its history.
bool belongsToRepository(const OdString& path) {
    const OdString prefix = OdString(layout::metadataFolder) + L'/';
    return path.left(prefix.getLength()) == prefix;
}

/// Whoever names one of these and nothing else wants to know why it does not come.
bool isNamed(const RelativePath& path, const RestoreRequest& request) {
    return std::find(request.paths.begin(), request.paths.end(), path.bytes()) !=
           request.paths.end();
}

/// Of the chosen files those that are written elsewhere.
Expected<Tree> exportedFiles(Tree tree, const RestoreRequest& request, Caller& caller) {
    if (tree.empty())
        return tree;
    const RelativePath first = tree.begin()->first;
    const std::size_t left =
        std::erase_if(tree, [](const auto& file) { return belongsToRepository(file.first); });
    if (tree.empty() && isNamed(first, request))
        return ErrorMessage{
            OdString::format(tr(L"'%ls' belongs to the repository and is not written anywhere else "
                                L"(qrv show prints it)"),
                             printable(first))};
    if (left > 0)
        caller.note(OdString::format(
            tr(L"Note: files left out because they belong to the repository: %i"), left));
    return tree;
}

Paths exportTo(Repository& repository, const RestoreRequest& request, const std::string& folder) {
    Expected<Tree> chosen = chosenFiles(repository, request);
    if (!chosen)
        return chosen.error();
    // There --force would replace what is kept nowhere.
    if (pathInRepository(repository.root(), folder))
        return ErrorMessage{
            OdString::format(tr(L"'%ls' lies in the repository (without --to, its files are "
                                L"replaced with care)"),
                             printable(OdString::fromNarrow(folder)))};
    const Expected<Tree> tree = exportedFiles(std::move(*chosen), request, repository.caller());
    if (!tree)
        return tree.error();
    if (request.dryRun)
        return pathsOf(*tree);
    const Expected<Target> target = openTarget(folder);
    if (!target)
        return target.error();
    for (const auto& [path, file] : *tree) {
        const Expected<void> done =
            exportFile(repository, path, file.contents, *target, request.force);
        if (!done)
            return done.error();
    }
    return pathsOf(*tree);
}

}  // namespace

Expected<std::vector<OdString>> restoreFiles(const std::string& folder,
                                             const RestoreRequest& request, Caller& caller) {
    return withRepository(folder, Repository::Use::change, caller,
                          [&](WorkingTree& workingTree) { return restore(workingTree, request); });
}

Expected<std::vector<OdString>> exportFiles(const std::string& folder,
                                            const RestoreRequest& request,
                                            const std::string& target, Caller& caller) {
    // Elsewhere nothing of the repository changes, and what is made is the person's own.
    return withLook(folder, caller, [&](WorkingTree& workingTree) {
        return exportTo(workingTree.repository(), request, target);
    });
}

}  // namespace qrv
