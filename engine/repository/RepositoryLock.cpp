#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/paths/Layout.h>
#include <engine/repository/RepositoryLock.h>

#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

namespace qrv {

namespace {

constexpr std::chrono::milliseconds waitForLock{10000};
constexpr std::chrono::milliseconds pauseBetweenTries{20};

bool isHeld(const sys::Outcome<sys::Lock>& lock) {
    return !lock && lock.error() == std::errc::operation_would_block;
}

ErrorMessage failure(const common::RootPath& root, std::error_code cause) {
    if (cause == std::errc::operation_would_block)
        return {OdString::format(tr(L"Another process is changing the repository '%ls'"),
                                 printable(root.path()))};
    return systemFailure(tr(L"The repository '%ls' cannot be changed: %ls"), root.path(), cause);
}

}  // namespace

Expected<sys::Lock> lockForChange(const sys::Folder& folder, const common::RootPath& root) {
    const auto end = std::chrono::steady_clock::now() + waitForLock;
    for (;;) {
        sys::Outcome<sys::Lock> lock = sys::Lock::tryTake(folder, layout::lockPath);
        if (lock)
            return std::move(*lock);
        if (!isHeld(lock) || std::chrono::steady_clock::now() > end)
            return failure(root, lock.error());
        std::this_thread::sleep_for(pauseBetweenTries);
    }
}

std::optional<sys::Lock> lockIfFree(const sys::Folder& folder) {
    sys::Outcome<sys::Lock> lock = sys::Lock::tryTake(folder, layout::lockPath);
    return lock ? std::optional(std::move(*lock)) : std::nullopt;
}

bool isLocked(const sys::Folder& folder) {
    return folder.status(layout::lockPath) && isHeld(sys::Lock::tryTake(folder, layout::lockPath));
}

}  // namespace qrv
