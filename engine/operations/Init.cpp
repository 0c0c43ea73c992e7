#include <common/worktree/RepoIgnore.h>
#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/base/WithoutExceptions.h>
#include <engine/operations/Init.h>
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
#include <filesystem>
#include <system_error>

namespace qrv {

namespace {

namespace fs = std::filesystem;

constexpr int anyKind = 0x1FFF;

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
Expected<void> checkOld(const fs::path& folder, const Caller& caller) {
    const sys::Outcome<sys::Folder> opened = sys::Folder::open(folder.native());
    if (!opened)
        return {};
    if (Expected<void> owned = checkOwner(*opened, toText(folder), caller); !owned)
        return owned;
    return checkMetadata(*opened, toText(folder));
}

Expected<common::RootPath> makeRoot(const fs::path& folder, const Caller& caller) {
    std::error_code error;
    if (fs::exists(folder, error) && !fs::is_directory(folder, error))
        return ErrorMessage{
            OdString::format(tr(L"'%ls' is not a folder"), printable(toText(folder)))};
    if (Expected<void> checked = checkOld(folder, caller); !checked)
        return checked.error();
    return common::RootPath::get(toText(folder), true);
}

/// An interrupted run may have left any of these out; what is there is not touched.
Expected<void> makeMissingFiles(const common::RootPath& root, Caller& caller) {
    const Host host;
    const bool hadState = ut::FileName(root.statePath()).exists(anyKind);
    common::Cache::create(root, host);
    if (!host.lastWrite())
        return host.lastWrite();
    if (!hadState && !root.isNew())
        caller.note(tr(L"Note: there was no state file; a new one names the branch 'master'"));
    return common::RepoIgnore::write(
        common::RepoIgnore::explanation(false) + common::RepoIgnore::defaultIgnore(), root);
}

/// All that is made in the root; gives the number of ignore rules that were added.
Expected<int> complete(const common::RootPath& root, const InitRequest& request, Caller& caller) {
    const Expected<RepositoryPlace> repository = openRepository(root.path().toNarrow(), caller);
    if (!repository)
        return repository.error();
    const SharedMode shared(repository->folder, caller);
    if (const Expected<void> made = makeMissingFiles(root, caller); !made)
        return made.error();
    if (request.name) {
        const Expected<void> named =
            setProjectName(request.name->toNarrow(), root, repository->folder, caller);
        if (!named)
            return named.error();
    }
    return request.addDraftingRules ? addDraftingIgnoreRules(root) : Expected<int>(0);
}

std::optional<OdString> repositoryAbove(const fs::path& folder) {
    const auto outer = enclosingRepository(folder.parent_path());
    return outer && *outer ? std::optional((*outer)->root.path()) : std::nullopt;
}

Expected<Initialised> initialised(const std::string& folder, const InitRequest& request,
                                  Caller& caller) {
    const std::string refusal =
        request.name ? refusalOfName(request.name->toNarrow()) : std::string();
    if (!refusal.empty())
        return ErrorMessage{OdString::fromNarrow(refusal)};
    const Expected<fs::path> path = absolutePath(folder);
    if (!path)
        return path.error();
    const Expected<common::RootPath> root = makeRoot(*path, caller);
    if (!root)
        return root.error();
    const Expected<int> addedRules = complete(*root, request, caller);
    if (!addedRules)
        return addedRules.error();
    return Initialised{.root = *root,
                       .name = displayName(*root),
                       .addedRules = *addedRules,
                       .outerRepository = root->isNew() ? repositoryAbove(*path) : std::nullopt};
}

}  // namespace

Expected<Initialised> initialise(const std::string& folder, const InitRequest& request,
                                 Caller& caller) {
    return withoutExceptions([&] { return initialised(folder, request, caller); });
}

}  // namespace qrv
