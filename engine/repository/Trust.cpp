#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/paths/Layout.h>
#include <engine/repository/Trust.h>
#include <sys/User.h>

#include <algorithm>
#include <optional>
#include <system_error>
#include <vector>

namespace qrv {

namespace {

ErrorMessage cannotOpen(const OdString& path, std::error_code cause) {
    return systemFailure(tr(L"'%ls' cannot be opened: %ls"), path, cause);
}

/// The first of the two folders' owners who is somebody else.
Expected<std::optional<std::uint32_t>> stranger(const sys::Folder& folder, const OdString& path,
                                                const Caller& caller) {
    for (const char* const name : {".", layout::metadataFolder}) {
        const sys::Outcome<sys::FileStatus> status = folder.status(name);
        if (!status && sys::meansAbsent(status.error()))
            continue;
        if (!status)
            return cannotOpen(path, status.error());
        if (status->owner != sys::effectiveUser() && !caller.isPerson(status->owner))
            return std::optional(status->owner);
    }
    return std::optional<std::uint32_t>();
}

}  // namespace

Expected<void> checkOwner(const sys::Folder& folder, const OdString& path, const Caller& caller) {
    const Expected<std::optional<std::uint32_t>> other = stranger(folder, path, caller);
    if (!other)
        return other.error();
    if (!*other)
        return {};
    const Expected<std::vector<OdString>> trusted = caller.trustedFolders();
    if (!trusted)
        return trusted.error();
    if (std::find(trusted->begin(), trusted->end(), path) != trusted->end())
        return {};
    const OdString name = printable(OdString::fromNarrow(sys::userName(**other)));
    return ErrorMessage{OdString::format(
        tr(L"'%ls' belongs to '%ls', and whoever keeps a repository decides what qrv does with the "
           L"files in it; if you trust this one: qrv config trusted '%ls'"),
        printable(path), name, printable(path))};
}

}  // namespace qrv
