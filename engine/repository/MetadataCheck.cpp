#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/repository/MetadataCheck.h>

#include <array>
#include <optional>
#include <span>
#include <utility>

namespace qrv {

namespace {

struct Entry {
    const char* name;
    sys::FileKind kind;
};

constexpr const char* metadataFolder = ".qrv";
constexpr const char* propertiesFolder = "properties";

// The databases' own journals are looked at by what opens the databases.
constexpr std::array metadata = {
    Entry{"objects", sys::FileKind::folder},    Entry{"tf", sys::FileKind::folder},
    Entry{"qrv.state", sys::FileKind::regular}, Entry{"qrv.db", sys::FileKind::regular},
    Entry{"qrv.log", sys::FileKind::regular},   Entry{"objects.pack", sys::FileKind::regular},
    Entry{"baseline", sys::FileKind::regular},  Entry{"lock", sys::FileKind::regular},
    Entry{"commits", sys::FileKind::folder},    Entry{"references", sys::FileKind::regular}};
constexpr std::array properties = {Entry{"ignore", sys::FileKind::regular},
                                   Entry{"project_name", sys::FileKind::regular}};

ErrorMessage failure(const OdString& text, const OdString& path) {
    return {OdString::format(text, printable(path))};
}

ErrorMessage failure(const OdString& path, std::error_code cause) {
    return systemFailure(tr(L"'%ls' cannot be opened: %ls"), path, cause);
}

Expected<void> checkEntry(const sys::Folder& folder, const OdString& path, const Entry& entry) {
    const sys::Outcome<sys::FileStatus> status = folder.status(entry.name);
    const OdString whole = path + L'/' + OdString(entry.name);
    if (!status)
        return sys::meansAbsent(status.error()) ? Expected<void>() : failure(whole, status.error());
    if (status->kind == entry.kind)
        return {};
    if (status->kind == sys::FileKind::link)
        return failure(tr(L"'%ls' is a symbolic link, and in a repository none is followed"),
                       whole);
    return failure(entry.kind == sys::FileKind::folder ? tr(L"'%ls' is not a folder")
                                                       : tr(L"'%ls' is not a regular file"),
                   whole);
}

/// Nothing when there is no such folder.
Expected<std::optional<sys::Folder>> openChecked(const sys::Folder& folder, const OdString& path,
                                                 const char* name) {
    if (const Expected<void> checked = checkEntry(folder, path, {name, sys::FileKind::folder});
        !checked)
        return checked.error();
    sys::Outcome<sys::Folder> opened = folder.openFolder(name);
    if (opened)
        return std::optional(std::move(*opened));
    if (sys::meansAbsent(opened.error()))
        return std::optional<sys::Folder>();
    return failure(path + L'/' + OdString(name), opened.error());
}

Expected<void> checkEntries(const sys::Folder& folder, const OdString& path,
                            std::span<const Entry> entries) {
    for (const Entry& entry : entries) {
        if (Expected<void> checked = checkEntry(folder, path, entry); !checked)
            return checked;
    }
    return {};
}

}  // namespace

Expected<void> checkMetadata(const sys::Folder& folder, const OdString& root) {
    const OdString path = root + L'/' + OdString(metadataFolder);
    const Expected<std::optional<sys::Folder>> opened = openChecked(folder, root, metadataFolder);
    if (!opened)
        return opened.error();
    if (!*opened)
        return {};
    if (Expected<void> checked = checkEntries(**opened, path, metadata); !checked)
        return checked;
    const Expected<std::optional<sys::Folder>> below =
        openChecked(**opened, path, propertiesFolder);
    if (!below)
        return below.error();
    const OdString belowPath = path + L'/' + OdString(propertiesFolder);
    return *below ? checkEntries(**below, belowPath, properties) : Expected<void>();
}

}  // namespace qrv
