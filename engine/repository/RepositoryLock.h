#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <sys/Folder.h>
#include <sys/Lock.h>

#include <optional>

namespace qrv {

/// The lock that whoever changes a repository holds, until its end. `folder` is the root and `root`
/// its path, for the messages. Waits some seconds for another process that holds it, and fails when
/// that does not let go, or when the lock cannot be taken at all.
Expected<sys::Lock> lockForChange(const sys::Folder& folder, const common::RootPath& root);

/// The same lock if nobody holds it and it can be taken; never waits.
std::optional<sys::Lock> lockIfFree(const sys::Folder& folder);

/// Whether somebody holds it now, this process included. Makes nothing.
bool isLocked(const sys::Folder& folder);

}  // namespace qrv
