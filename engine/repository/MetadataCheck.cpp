#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/paths/Layout.h>
#include <engine/repository/MetadataCheck.h>

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace qrv {

namespace {

struct Entry {
    const char* path;
    sys::FileKind kind;
};

// The databases' own journals are looked at by what opens the databases.
constexpr std::array metadata = {Entry{layout::objectsFolder, sys::FileKind::folder},
                                 Entry{layout::storesFolder, sys::FileKind::folder},
                                 Entry{layout::packsFolder, sys::FileKind::folder},
                                 Entry{layout::statePath, sys::FileKind::regular},
                                 Entry{layout::historyPath, sys::FileKind::regular},
                                 Entry{layout::logPath, sys::FileKind::regular},
                                 Entry{layout::oldPackPath, sys::FileKind::regular},
                                 Entry{layout::baselinePath, sys::FileKind::regular},
                                 Entry{layout::lockPath, sys::FileKind::regular},
                                 Entry{layout::commitRecordsFolder, sys::FileKind::folder},
                                 Entry{layout::referenceRecordPath, sys::FileKind::regular}};
constexpr std::array properties = {Entry{layout::ignoreRulesPath, sys::FileKind::regular},
                                   Entry{layout::projectNamePath, sys::FileKind::regular}};

/// The name of the entry in its folder, which is open.
std::string nameOf(const Entry& entry) {
    const std::string_view path = entry.path;
    return std::string(path.substr(path.rfind('/') + 1));
}

ErrorMessage failure(const OdString& text, const OdString& path) {
    return {OdString::format(text, printable(path))};
}

ErrorMessage failure(const OdString& path, std::error_code cause) {
    return systemFailure(tr(L"'%ls' cannot be opened: %ls"), path, cause);
}

/// `folder` is the one in which the entry lies, and `root` is for the messages.
Expected<void> checkEntry(const sys::Folder& folder, const OdString& root, const Entry& entry) {
    const sys::Outcome<sys::FileStatus> status = folder.status(nameOf(entry));
    const OdString whole = root + L'/' + OdString(entry.path);
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
Expected<std::optional<sys::Folder>> openChecked(const sys::Folder& folder, const OdString& root,
                                                 const char* path) {
    const Entry entry = {.path = path, .kind = sys::FileKind::folder};
    if (const Expected<void> checked = checkEntry(folder, root, entry); !checked)
        return checked.error();
    sys::Outcome<sys::Folder> opened = folder.openFolder(nameOf(entry));
    if (opened)
        return std::optional(std::move(*opened));
    if (sys::meansAbsent(opened.error()))
        return std::optional<sys::Folder>();
    return failure(root + L'/' + OdString(path), opened.error());
}

Expected<void> checkEntries(const sys::Folder& folder, const OdString& root,
                            std::span<const Entry> entries) {
    for (const Entry& entry : entries) {
        if (Expected<void> checked = checkEntry(folder, root, entry); !checked)
            return checked;
    }
    return {};
}

}  // namespace

Expected<void> checkMetadata(const sys::Folder& folder, const OdString& root) {
    const Expected<std::optional<sys::Folder>> opened =
        openChecked(folder, root, layout::metadataFolder);
    if (!opened)
        return opened.error();
    if (!*opened)
        return {};
    if (Expected<void> checked = checkEntries(**opened, root, metadata); !checked)
        return checked;
    const Expected<std::optional<sys::Folder>> below =
        openChecked(**opened, root, layout::propertiesFolder);
    if (!below)
        return below.error();
    return *below ? checkEntries(**below, root, properties) : Expected<void>();
}

}  // namespace qrv
