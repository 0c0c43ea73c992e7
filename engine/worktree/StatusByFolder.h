#pragma once

#include <engine/worktree/Unseen.h>
#include <sys/Folder.h>

#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace qrv {

/// Whether the error says that no versioned file is there. Below a link, none ever is.
bool meansNoFile(std::error_code error);

/// Asks for files of one folder after the other, where the system need not walk to each anew.
class StatusByFolder {
public:
    /// The root must live as long.
    explicit StatusByFolder(const sys::Folder& root) : root_(root) {}

    /// What is not there is `other`. Nothing when nobody can tell, which is noted.
    std::optional<sys::FileStatus> status(std::string_view path);

    /// Adds to `unseen` what could not be asked for.
    void note(std::string_view path, std::error_code cause);
    const std::vector<Unseen>& unseen() const { return unseen_; }

private:
    void enter(std::string_view path);
    std::optional<sys::FileStatus> statusIn(const sys::Folder& folder, std::string_view name,
                                            std::string_view path);

    const sys::Folder& root_;
    std::string folderPath_;
    std::optional<sys::Outcome<sys::Folder>> folder_;
    std::vector<Unseen> unseen_;
};

}  // namespace qrv
