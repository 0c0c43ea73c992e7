#pragma once

#include <common/base/Expected.h>
#include <common/base/Export.h>
#include <common/repository/RootPath.h>
#include <common/worktree/File.h>
#include <platform/kernel/OdString.h>

#include <cstdint>
#include <functional>
#include <regex>
#include <vector>

namespace common {

/// What `collectDirContents` lists.
class QRV_COMMON_EXPORT CollectOptions {
public:
    /// The four choices, in the order of the members below.
    CollectOptions(bool isRelative, bool withDirectories, bool extendedListing,
                   const std::vector<std::regex>& excludedNames);

    bool relative;            ///< paths relative to the folder; otherwise they begin with its path
    bool collectDirectories;  ///< also list the sub-folders
    std::uint32_t listFlags;  ///< more attributes for the folder listing: 4 when extended, else 0
    /// A file or folder whose whole bare name, in its narrow form, matches one of them is left out,
    /// a folder with everything below it.
    std::vector<std::regex> excludes;
};

/// What was found, in the order of the walk: all files of a folder, then one sub-folder after the
/// other with everything below it.
struct DirContents {
    std::vector<OdString> files;        ///< the paths of the files
    std::vector<OdString> directories;  ///< those of the sub-folders, if they were asked for
};

/// Lists what is in `folder` and below it. Folders that cannot be read are left out silently.
QRV_COMMON_EXPORT DirContents collectDirContents(const OdString& folder,
                                                 const CollectOptions& options);

/// The files of a repository, relative to its root: those that the ignore rules leave, without the
/// metadata folders, and behind them those of the properties folder. Makes the ignore file when it
/// is missing. `onError` is told what is wrong in that file, as by `RepoIgnore`. Folders that
/// cannot be read are left out silently, the root included, so that no error is given today.
QRV_COMMON_EXPORT Expected<std::vector<File>> collectRepoFiles(
    std::function<void(const OdString&)> onError, const RootPath& root);

}  // namespace common
