#include <common/base/MessageInternal.h>
#include <common/worktree/FileChange.h>

namespace common {

Expected<OdString> toString(FileChange change) {
    switch (change) {
        case FileChange::added:
            return OdString(L"added");
        case FileChange::modified:
            return OdString(L"modified");
        case FileChange::removed:
            return OdString(L"removed");
        case FileChange::unchanged:
            return OdString(L"unchanged");
    }
    return translatedError(L"unsupported file change");
}

Expected<FileChange> toFileChange(const OdString& code) {
    if (code == L"unchanged")
        return FileChange::unchanged;
    if (code == L"added")
        return FileChange::added;
    if (code == L"modified")
        return FileChange::modified;
    if (code == L"removed")
        return FileChange::removed;
    return translatedError(L"Unsupported file change enum: %ls", code);
}

}  // namespace common
