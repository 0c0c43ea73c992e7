#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/terminal/Message.h>
#include <cli/user/ProjectRegistry.h>
#include <common/worktree/RepoIgnore.h>
#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/paths/Layout.h>
#include <engine/repository/FindRepository.h>
#include <engine/repository/MetadataCheck.h>
#include <engine/repository/OpenState.h>
#include <engine/repository/ProjectName.h>
#include <engine/repository/SharedMode.h>
#include <engine/repository/Trust.h>
#include <engine/worktree/IgnoreRules.h>
#include <platform/ut/FileName.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace qrv::cli {

namespace {

namespace fs = std::filesystem;

constexpr int anyKind = 0x1FFF;

struct Arguments {
    std::string folder = ".";
    std::optional<std::string> name;
    bool cadIgnores = false;
    bool asJson = false;
};

Expected<fs::path> absolutePath(const std::string& folder) {
    std::error_code error;
    const fs::path absolute = fs::absolute(folder, error);
    const fs::path path = error ? fs::path() : fs::weakly_canonical(absolute, error);
    if (error)
        return systemFailure(tr(L"'%ls' cannot be used: %ls"), toText(folder), error);
    if (std::find(path.begin(), path.end(), layout::metadataFolder) != path.end())
        return ErrorMessage{OdString::format(
            tr(L"'%ls' lies in the metadata folder of a repository"), printable(toText(path)))};
    // A folder that is still to be made may end with a separator.
    return path.has_filename() ? path : path.parent_path();
}

/// What is there already may come from a stranger.
Expected<void> checkOld(const fs::path& folder) {
    const sys::Outcome<sys::Folder> opened = sys::Folder::open(folder.native());
    if (!opened)
        return {};
    if (Expected<void> owned = checkOwner(*opened, toText(folder), person()); !owned)
        return owned;
    return checkMetadata(*opened, toText(folder));
}

Expected<common::RootPath> makeRoot(const fs::path& folder) {
    std::error_code error;
    if (fs::exists(folder, error) && !fs::is_directory(folder, error))
        return ErrorMessage{
            OdString::format(tr(L"'%ls' is not a folder"), printable(toText(folder)))};
    if (Expected<void> checked = checkOld(folder); !checked)
        return checked.error();
    return common::RootPath::get(toText(folder), true);
}

/// An interrupted run may have left any of these out; what is there is not touched.
Expected<void> makeMissingFiles(const common::RootPath& root) {
    const Host host;
    const bool hadState = ut::FileName(root.statePath()).exists(anyKind);
    common::Cache::create(root, host);
    if (!host.lastWrite())
        return host.lastWrite();
    if (!hadState && !root.isNew())
        printMessage(tr(L"Note: there was no state file; a new one names the branch 'master'"));
    return common::RepoIgnore::write(
        common::RepoIgnore::explanation(false) + common::RepoIgnore::defaultIgnore(), root);
}

/// All that is made in the root; gives the number of ignore rules that were added.
Expected<int> complete(const common::RootPath& root, const Arguments& arguments) {
    const Expected<RepositoryPlace> repository = openRepository(root.path().toNarrow(), person());
    if (!repository)
        return repository.error();
    const SharedMode shared(repository->folder, person());
    if (const Expected<void> made = makeMissingFiles(root); !made)
        return made.error();
    if (arguments.name) {
        const Expected<void> named =
            setProjectName(*arguments.name, root, repository->folder, person());
        if (!named)
            return named.error();
    }
    return arguments.cadIgnores ? addDraftingIgnoreRules(root) : Expected<int>(0);
}

void noteOuterRepository(const fs::path& folder) {
    const auto outer = enclosingRepository(folder.parent_path());
    if (outer && *outer)
        printMessage(
            OdString::format(tr(L"Note: the repository '%ls' above it goes on listing its files"),
                             printable((*outer)->root.path())));
}

/// A project that is registered keeps its name there, unless it was just given one.
Expected<void> makeRegistered(const common::RootPath& root, bool hasNewName) {
    const Expected<std::vector<RegisteredProject>> known = projectsIn(root.path());
    if (!known)
        return known.error();
    if (!known->empty() && !hasNewName)
        return {};
    const Expected<RegisteredProject> project = registerProject(root, displayName(root));
    return project ? Expected<void>() : project.error();
}

/// The repository is whole without it.
void noteFailedRegistration(const Expected<void>& registered) {
    if (!registered)
        printMessage(OdString::format(tr(L"Note: your registry of projects stays as it was: %ls"),
                                      registered.error().message));
}

jsonlib::json::Value documentOf(const common::RootPath& root, int addedRules) {
    jsonlib::json::Object object;
    object[L"root"] = root.path().toWide();
    object[L"name"] = displayName(root).toWide();
    object[L"made"] = root.isNew();
    object[L"ignoreRulesAdded"] = static_cast<std::int64_t>(addedRules);
    return object;
}

OdString plainText(const common::RootPath& root, const Arguments& arguments, int addedRules) {
    const OdString pattern =
        root.isNew() ? tr(L"Made a repository in '%ls'\n") : tr(L"'%ls' is already a repository\n");
    OdString text = OdString::format(pattern, printable(root.path()));
    if (arguments.cadIgnores)
        text += OdString::format(tr(L"Ignore rules added: %i\n"), addedRules);
    return text;
}

Expected<void> initialise(const Arguments& arguments, Output& output) {
    const Expected<fs::path> folder = absolutePath(arguments.folder);
    if (!folder)
        return folder.error();
    const Expected<common::RootPath> root = makeRoot(*folder);
    if (!root)
        return root.error();
    const Expected<int> addedRules = complete(*root, arguments);
    if (!addedRules)
        return addedRules.error();
    noteFailedRegistration(makeRegistered(*root, arguments.name.has_value()));

    if (root->isNew())
        noteOuterRepository(*folder);
    if (arguments.asJson)
        writeJson(documentOf(*root, *addedRules), output);
    else
        output.write(plainText(*root, arguments, *addedRules).toNarrow());
    return {};
}

}  // namespace

Action declareInit(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser.addOption(
        "DIR", arguments->folder,
        trUtf8(L"The project's folder, made if it is missing (default: the current one)"));
    parser.addOption("--name", arguments->name, trUtf8(L"The project's name")).check(refusalOfName);
    parser.addFlag("--cad-ignores", arguments->cadIgnores,
                   trUtf8(L"Also ignore autosaves, backups, plot logs, lock files and temporary "
                          L"files"));
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print the result as JSON"));
    return [arguments](Output& output) { return initialise(*arguments, output); };
}

}  // namespace qrv::cli
