#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/paths/Layout.h>
#include <engine/repository/HistoryTraces.h>
#include <engine/repository/MetadataFiles.h>
#include <engine/repository/OpenState.h>

#include <memory>
#include <string>

namespace qrv {

namespace {

constexpr const char* traces[] = {layout::referenceRecordPath, layout::oldPackPath,
                                  layout::baselinePath};

ErrorMessage cannotRead(const common::RootPath& root, const char* path, std::error_code cause) {
    return systemFailure(tr(L"'%ls' cannot be read: %ls"), root.pathTo(OdString(path)), cause);
}

std::optional<OdString> toPath(const std::string& path) {
    return OdString::fromNarrow(path);
}

/// Only a commit has ever filled the index.
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
            return toPath(trace);
        if (!status && !sys::meansAbsent(status.error()))
            return cannotRead(root, trace, status.error());
    }
    const Expected<MetadataFiles> files = listMetadata(root, folder);
    if (!files)
        return files.error();
    if (!files->packs.empty())
        return toPath(layout::packPath(files->packs.front().name.toNarrow()));
    if (!files->objects.empty())
        return toPath(layout::objectPath(files->objects.front().name.toNarrow()));
    if (!files->stores.empty())
        return toPath(layout::drawingStorePath(files->stores.front().name));
    if (hasIndex(root, folder))
        return toPath(layout::statePath);
    return std::optional<OdString>();
}

Expected<void> checkHistoryIsThere(const common::RootPath& root, const sys::Folder& folder) {
    const sys::Outcome<sys::FileStatus> status = folder.status(layout::historyPath);
    if (status && status->sizeBytes > 0)
        return {};
    if (!status && !sys::meansAbsent(status.error()))
        return cannotRead(root, layout::historyPath, status.error());
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
