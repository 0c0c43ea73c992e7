#include <engine/worktree/StatusByFolder.h>

#include <cstddef>

namespace qrv {

bool meansNoFile(std::error_code error) {
    return sys::meansAbsent(error) || error == std::errc::too_many_symbolic_link_levels;
}

std::optional<sys::FileStatus> StatusByFolder::status(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string_view::npos)
        return statusIn(root_, path, path);
    if (!folder_ || path.substr(0, slash) != folderPath_)
        enter(path.substr(0, slash));
    if (*folder_)
        return statusIn(**folder_, path.substr(slash + 1), path);
    return meansNoFile(folder_->error()) ? std::optional(sys::FileStatus()) : std::nullopt;
}

void StatusByFolder::note(std::string_view path, std::error_code cause) {
    unseen_.push_back({OdString::fromNarrow(path), cause});
}

void StatusByFolder::enter(std::string_view path) {
    folderPath_ = path;
    folder_ = root_.openFolder(folderPath_);
    if (!*folder_ && !meansNoFile(folder_->error()))
        note(path, folder_->error());
}

std::optional<sys::FileStatus> StatusByFolder::statusIn(const sys::Folder& folder,
                                                        std::string_view name,
                                                        std::string_view path) {
    const sys::Outcome<sys::FileStatus> status = folder.status(std::string(name));
    if (status)
        return *status;
    if (meansNoFile(status.error()))
        return sys::FileStatus();
    note(path, status.error());
    return std::nullopt;
}

}  // namespace qrv
