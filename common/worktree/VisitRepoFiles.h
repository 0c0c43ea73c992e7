#pragma once

#include <common/base/Expected.h>
#include <common/base/Export.h>
#include <common/repository/RootPath.h>
#include <platform/kernel/OdString.h>

#include <functional>

namespace common {

// An addition: what a host is promised stands in CollectFiles.h. These two are for programs that
// cannot wait for the whole list, must know what it lacks, or judge names by rules of their own.

/// Gives the paths that `collectRepoFiles` lists to `onFile`, in the same order, each as soon as it
/// is found: for whoever needs few of them. `onUnread` is given, relative to the root, each folder
/// that could not be listed, none of whose files is given, and the ignore file when it could not be
/// read: for whoever must not take what is out of sight for what is not there. It does not say why,
/// and a folder that somebody removes meanwhile is among them. What either of them throws ends the
/// walk. Fails as `collectRepoFiles` does.
QRV_COMMON_EXPORT Expected<void> visitRepoFiles(std::function<void(const OdString&)> onError,
                                                const RootPath& root,
                                                const std::function<void(OdString)>& onFile,
                                                const std::function<void(OdString)>& onUnread);

/// The same walk without the ignore file, which is neither read nor made: left out is every file or
/// folder for whose bare name `isExcluded` is true, and the metadata folders as ever. What it
/// throws ends the walk, too.
QRV_COMMON_EXPORT Expected<void> visitRepoFiles(
    const RootPath& root, const std::function<bool(const OdString&)>& isExcluded,
    const std::function<void(OdString)>& onFile, const std::function<void(OdString)>& onUnread);

}  // namespace common
