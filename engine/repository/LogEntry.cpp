#include <common/repository/ActivityLog.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/paths/Layout.h>
#include <engine/repository/LogEntry.h>
#include <engine/repository/MetadataCheck.h>

#include <cstdint>
#include <string>

namespace qrv {

namespace {

/// 0 for a missing file.
std::int64_t logSize(const sys::Folder& folder) {
    const sys::Outcome<sys::FileStatus> status = folder.status(layout::logPath);
    return status ? status->sizeBytes : 0;
}

}  // namespace

OdString quotedName(const OdString& name) {
    OdString quoted = L"'";
    const OdString safe = printable(name);
    for (int index = 0; index < safe.getLength(); ++index) {
        if (safe[index] == L'\'')
            quoted += L"'\\''";
        else
            quoted += safe[index];
    }
    return quoted + L"'";
}

std::string refusalOfNote(const std::string& note) {
    const OdString text = OdString::fromNarrow(note);
    if (text.isEmpty())
        return trUtf8(L"A note cannot be empty");
    if (!(printable(text) == text))
        return trUtf8(L"A note must be one line of plain text");
    return {};
}

Expected<void> addToLog(const OdString& event, const common::RootPath& root,
                        const sys::Folder& folder) {
    if (Expected<void> checked = checkMetadata(folder, root.path()); !checked)
        return checked;
    const std::int64_t sizeBefore = logSize(folder);
    // The file's size, since the library notices no failure after the file is open, and opens it by
    // its path.
    if (common::logString(event, root) &&
        logSize(folder) > sizeBefore + static_cast<std::int64_t>(event.toNarrow().size()))
        return {};
    return ErrorMessage{OdString::format(tr(L"The activity log '%ls' cannot be written"),
                                         printable(root.logPath()))};
}

void logEvent(const OdString& event, const common::RootPath& root, const sys::Folder& folder,
              Caller& caller) {
    if (const Expected<void> added = addToLog(event, root, folder); !added)
        caller.note(OdString::format(tr(L"Note: %ls"), added.error().message));
}

}  // namespace qrv
