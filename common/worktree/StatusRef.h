#pragma once

#include <common/base/Export.h>
#include <common/worktree/FileChange.h>
#include <platform/kernel/OdString.h>

#include <memory>

namespace common {

class ConflictData;

/// The status of one file. The order of the operations is the order of the virtual table.
class QRV_COMMON_EXPORT StatusImp {
public:
    virtual ~StatusImp();
    /// The file's path, relative to the repository's root.
    virtual OdString path() const = 0;
    /// What happened to the file.
    virtual FileChange status() const = 0;
    /// The file's conflict; may be empty, and may be assigned through the reference.
    virtual std::shared_ptr<ConflictData>& conflictInfo() = 0;
    /// Whether the two stand for the same file and change.
    virtual bool operator==(const StatusImp& other) const = 0;

protected:
    StatusImp() = default;
    StatusImp(const StatusImp&) = default;
    StatusImp& operator=(const StatusImp&) = default;
};

/// A handle on the status of one file. Copies share the status; a handle that was moved from has
/// none and may only be assigned, compared and destroyed.
class QRV_COMMON_EXPORT StatusRef {
public:
    /// A new status without a conflict, selected.
    StatusRef(const OdString& path, FileChange change);

    /// The file's path, relative to the repository's root.
    OdString path() const { return imp->path(); }
    /// What happened to the file.
    FileChange status() const { return imp->status(); }
    /// The file's conflict; may be empty, and may be assigned, for all copies of this handle.
    std::shared_ptr<ConflictData>& conflictInfo() { return imp->conflictInfo(); }
    /// The file's conflict; may be empty.
    const std::shared_ptr<ConflictData>& conflictInfo() const { return imp->conflictInfo(); }

    /// Equal path and change; neither the conflict nor `selected` counts. Handles without a status
    /// equal each other and nothing else.
    bool operator==(const StatusRef& other) const;

    bool selected = true;            ///< the host's mark; each copy has its own
    std::shared_ptr<StatusImp> imp;  ///< the status, shared by the copies
};

}  // namespace common
