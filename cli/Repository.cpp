#include <cli/Message.h>
#include <cli/Repository.h>
#include <cli/Translation.h>

#include <stdexcept>
#include <system_error>

namespace qrv_cli {

namespace fs = std::filesystem;

namespace {

Expected<fs::path> existingFolder(const std::string& folder) {
    std::error_code error;
    const fs::path path = fs::canonical(folder, error);
    if (!error && fs::is_directory(path, error))
        return path;
    if (!error)
        error = std::make_error_code(std::errc::not_a_directory);
    return ErrorMessage{OdString::format(tr(L"'%ls' cannot be opened: %ls"),
                                         printable(toText(folder)),
                                         OdString(error.message().c_str()))};
}

}  // namespace

OdString toText(const fs::path& path) {
    // The library needs a character that is not a separator, which the path "/" alone does not
    // have.
    return OdString::fromNarrow(path == "/" ? "/." : path.native());
}

std::optional<common::RootPath> enclosingRepository(fs::path folder) {
    for (;; folder = folder.parent_path()) {
        if (Expected<common::RootPath> root = common::RootPath::get(toText(folder), false))
            return *root;
        if (folder == folder.root_path())
            return std::nullopt;
    }
}

Expected<common::RootPath> findRepository(const std::string& folder) {
    const Expected<fs::path> path = existingFolder(folder);
    if (!path)
        return path.error();
    if (const std::optional<common::RootPath> root = enclosingRepository(*path))
        return *root;
    return ErrorMessage{OdString::format(
        tr(L"'%ls' is not in a repository, nor is any folder above it one (qrv init makes one)"),
        printable(toText(*path)))};
}

Expected<std::shared_ptr<common::Cache>> openState(const common::RootPath& root, const Host& host) {
    try {
        return common::Cache::get(root, host);
    } catch (const std::length_error&) {
        return ErrorMessage{OdString::format(
            tr(L"The state file '%ls' ends in the middle of a text"), printable(root.statePath()))};
    }
}

}  // namespace qrv_cli
