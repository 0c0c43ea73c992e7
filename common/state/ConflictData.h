#pragma once

#include <common/base/Export.h>
#include <common/worktree/FileChange.h>
#include <platform/kernel/OdArray.h>
#include <platform/kernel/OdDbHandle.h>
#include <platform/kernel/OdRxObject.h>
#include <platform/kernel/OdString.h>

namespace common {

/// How two versions of a drawing differ: the handles of the objects concerned, and the two drawings
/// while somebody has them open. A state file keeps the handles only.
struct QRV_COMMON_EXPORT DiffHandles {
    OdArray<OdDbHandle> modified;
    OdArray<OdDbHandle> locallyRemoved;
    OdArray<OdDbHandle> remotelyRemoved;
    OdArray<OdDbHandle> modifiedBlocks;
    /// Shared by all copies; empty unless somebody sets them.
    OdRxObjectPtr localDrawing;
    OdRxObjectPtr remoteDrawing;

    /// True when objects were modified or removed on either side. Modified blocks do not count, on
    /// purpose: with nothing but those the handles are not written to the state file either.
    bool hasHandles() const;

    friend bool operator==(const DiffHandles&, const DiffHandles&) = default;
};

/// A file that was changed here and on the server, and is not yet resolved.
class QRV_COMMON_EXPORT ConflictData {
public:
    ConflictData(const OdString& filePath, const OdString& url, FileChange local,
                 FileChange remote);
    ConflictData(const OdString& filePath, const OdString& url, FileChange local, FileChange remote,
                 const DiffHandles& difference);

    /// Relative to the repository's root.
    OdString path;
    /// The storage URL of the server's version.
    OdString remoteUrl;
    FileChange localType;
    FileChange remoteType;
    DiffHandles handles;

    friend bool operator==(const ConflictData&, const ConflictData&) = default;
};

}  // namespace common
