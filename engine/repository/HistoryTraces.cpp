#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/repository/HistoryTraces.h>
#include <engine/repository/MetadataFiles.h>
#include <engine/repository/Repository.h>

#include <memory>
#include <string>

namespace qrv {

namespace {

constexpr const char* historyPath = ".qrv/qrv.db";
constexpr const char* statePath = ".qrv/qrv.state";
constexpr const char* traces[] = {".qrv/references", ".qrv/objects.pack", ".qrv/baseline"};

ErrorMessage cannotRead(const common::RootPath& root, const char* path, std::error_code cause) {
    return systemFailure(tr(L"'%ls' cannot be read: %ls"), root.pathTo(OdString(path)), cause);
}

/// Only a commit fills the index.
bool hasIndex(const common::RootPath& root, const sys::Folder& folder) {
    const Host host;
    const Expected<std::shared_ptr<common::Cache>> cache = openState(root, folder, host);
    return cache && !(*cache)->read().index.empty();
}

}  // namespace

Expected<std::optional<OdString>> traceOfHistory(const common::RootPath& root,
                                                 const sys::Folder& folder) {
    for (const char* const trace : traces) {
        const sys::Outcome<sys::FileStatus> status = folder.status(trace);
        if (status && status->sizeBytes > 0)
            return std::optional(OdString(trace));
        if (!status && !sys::meansAbsent(status.error()))
            return cannotRead(root, trace, status.error());
    }
    const Expected<MetadataFiles> files = listMetadata(root, folder);
    if (!files)
        return files.error();
    if (!files->objects.empty())
        return std::optional(L".qrv/objects/" + files->objects.front().name);
    if (!files->stores.empty())
        return std::optional(L".qrv/tf/" + files->stores.front().name + L".tf");
    return hasIndex(root, folder) ? std::optional(OdString(statePath)) : std::optional<OdString>();
}

Expected<void> checkHistoryIsThere(const common::RootPath& root, const sys::Folder& folder) {
    const sys::Outcome<sys::FileStatus> status = folder.status(historyPath);
    if (status && status->sizeBytes > 0)
        return {};
    if (!status && !sys::meansAbsent(status.error()))
        return cannotRead(root, historyPath, status.error());
    const Expected<std::optional<OdString>> trace = traceOfHistory(root, folder);
    if (!trace)
        return trace.error();
    if (!*trace)
        return {};
    return ErrorMessage{OdString::format(
        tr(L"The history '%ls' is missing or empty, although '%ls' shows that there was one. "
           L"Nothing is changed until it is back: take it from a backup, or from the earlier "
           L"versions that a sync program keeps, or let qrv recover --history make it anew"),
        printable(root.dbPath()), printable(**trace))};
}

}  // namespace qrv
