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
    OdArray<OdDbHandle> modified;         ///< objects that differ
    OdArray<OdDbHandle> locallyRemoved;   ///< objects that are gone here
    OdArray<OdDbHandle> remotelyRemoved;  ///< objects that are gone on the server
    OdArray<OdDbHandle> modifiedBlocks;   ///< blocks that differ
    OdRxObjectPtr localDrawing;           ///< shared by all copies; empty unless somebody sets it
    OdRxObjectPtr remoteDrawing;          ///< shared by all copies; empty unless somebody sets it

    /// True when objects were modified or removed on either side. Modified blocks do not count, on
    /// purpose: with nothing but those the handles are not written to the state file either.
    bool hasHandles() const;

    friend bool operator==(const DiffHandles&, const DiffHandles&) = default;
};

/// A file that was changed here and on the server, and is not yet resolved.
class QRV_COMMON_EXPORT ConflictData {
public:
    /// A conflict whose differences are not known.
    ConflictData(const OdString& filePath, const OdString& url, FileChange local,
                 FileChange remote);
    /// A conflict of two versions of a drawing with what differs between them.
    ConflictData(const OdString& filePath, const OdString& url, FileChange local, FileChange remote,
                 const DiffHandles& difference);

    OdString path;          ///< relative to the repository's root
    OdString remoteUrl;     ///< the storage URL of the server's version
    FileChange localType;   ///< what happened to the file here
    FileChange remoteType;  ///< what happened to it on the server
    DiffHandles handles;    ///< what differs, where somebody compared the versions

    friend bool operator==(const ConflictData&, const ConflictData&) = default;
};

}  // namespace common
