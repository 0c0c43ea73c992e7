#pragma once

#include <engine/base/Caller.h>
#include <sys/Folder.h>

#include <cstdint>
#include <optional>
#include <utility>

namespace qrv {

/// A metadata folder that its group may write to is shared by colleagues. As long as this lives,
/// all that the process makes has that folder's permissions, whatever mask the person has, so that
/// the next one can go on with it; set-group-ID on the folder, which the system hands down, keeps
/// the group. Any other repository, and everything when the setting `shared-folders` is 0, follows
/// the person's mask alone: what is private stays private.
///
/// Of two that live at the same time the later one must end first.
class [[nodiscard]] SharedMode {
public:
    /// `root` is the root of a repository, with or without a metadata folder.
    SharedMode(const sys::Folder& root, const Caller& caller);
    SharedMode(SharedMode&& other) noexcept : before_(std::exchange(other.before_, {})) {}
    SharedMode& operator=(SharedMode&&) = delete;
    ~SharedMode();

private:
    /// The mask to go back to, if it was changed.
    std::optional<std::uint32_t> before_;
};

}  // namespace qrv
