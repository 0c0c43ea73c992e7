#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/paths/Layout.h>
#include <engine/repository/FindRepository.h>
#include <engine/repository/MetadataCheck.h>
#include <engine/repository/Trust.h>

#include <system_error>
#include <utility>

namespace qrv {

namespace fs = std::filesystem;

namespace {

Expected<fs::path> existingFolder(const std::string& folder) {
    std::error_code error;
    const fs::path path = fs::canonical(folder, error);
    if (!error && fs::is_directory(path, error))
        return path;
    if (!error)
        error = std::make_error_code(std::errc::not_a_directory);
    return systemFailure(tr(L"'%ls' cannot be opened: %ls"), toText(folder), error);
}

/// Also when that is a link, for whoever made it meant this folder and none above it. A file of
/// that name means nothing. Where nobody can look, a repository above may be the wrong one.
Expected<bool> hasMetadata(const fs::path& folder) {
    std::error_code error;
    const fs::path metadata = folder / layout::metadataFolder;
    const fs::file_type type = fs::symlink_status(metadata, error).type();
    if (type == fs::file_type::none)
        return systemFailure(tr(L"'%ls' cannot be opened: %ls"), toText(metadata), error);
    return type == fs::file_type::directory || type == fs::file_type::symlink;
}

Expected<RepositoryPlace> openAt(const fs::path& path) {
    sys::Outcome<sys::Folder> folder = sys::Folder::open(path.native());
    if (!folder)
        return systemFailure(tr(L"'%ls' cannot be opened: %ls"), toText(path), folder.error());
    const OdString text = toText(path);
    if (const Expected<void> checked = checkMetadata(*folder, text); !checked)
        return checked.error();
    const Expected<common::RootPath> root = common::RootPath::get(text, false);
    if (!root)
        return root.error();
    return RepositoryPlace{.root = *root, .folder = std::move(*folder)};
}

}  // namespace

OdString toText(const fs::path& path) {
    // The library needs a character that is not a separator, which the path "/" alone does not
    // have.
    return OdString::fromNarrow(path == "/" ? "/." : path.native());
}

Expected<std::optional<RepositoryPlace>> enclosingRepository(const fs::path& folder) {
    for (fs::path path = folder;; path = path.parent_path()) {
        const Expected<bool> isRepository = hasMetadata(path);
        if (!isRepository)
            return isRepository.error();
        if (*isRepository) {
            Expected<RepositoryPlace> repository = openAt(path);
            if (!repository)
                return repository.error();
            return std::optional(std::move(*repository));
        }
        if (path == path.root_path())
            return std::optional<RepositoryPlace>();
    }
}

Expected<RepositoryPlace> openRepository(const std::string& folder, const Caller& caller) {
    const Expected<fs::path> path = existingFolder(folder);
    if (!path)
        return path.error();
    Expected<std::optional<RepositoryPlace>> repository = enclosingRepository(*path);
    if (!repository)
        return repository.error();
    if (*repository) {
        // One of somebody else is not passed over on the way up: what the person meant is inside.
        const Expected<void> owned =
            checkOwner((*repository)->folder, (*repository)->root.path(), caller);
        return owned ? Expected<RepositoryPlace>(std::move(**repository)) : owned.error();
    }
    return ErrorMessage{OdString::format(
        tr(L"'%ls' is not in a repository, nor is any folder above it one (qrv init makes one)"),
        printable(toText(*path)))};
}

Expected<common::RootPath> findRepository(const std::string& folder, const Caller& caller) {
    Expected<RepositoryPlace> repository = openRepository(folder, caller);
    if (!repository)
        return repository.error();
    return std::move(repository->root);
}

}  // namespace qrv
