#include <engine/paths/Layout.h>
#include <engine/repository/SharedMode.h>
#include <sys/CreationMask.h>

namespace qrv {

namespace {

constexpr std::uint32_t groupMayWrite = 0020;
constexpr std::uint32_t allPermissions = 0777;

}  // namespace

SharedMode::SharedMode(const sys::Folder& root, const Caller& caller) {
    const sys::Outcome<sys::FileStatus> status = root.status(layout::metadataFolder);
    const bool isShared = status && status->kind == sys::FileKind::folder &&
                          (status->permissions & groupMayWrite) != 0;
    if (isShared && caller.followsSharedFolders())
        before_ = sys::setCreationMask(allPermissions & ~status->permissions);
}

SharedMode::~SharedMode() {
    if (before_)
        sys::setCreationMask(*before_);
}

}  // namespace qrv
