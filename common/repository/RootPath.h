#pragma once

#include <common/base/Expected.h>
#include <common/base/Export.h>
#include <platform/kernel/OdString.h>

namespace common {

/// The validated root folder of a project under version control, and the paths of everything that
/// the repository keeps in its metadata folder ".qrv". Only `get` makes one.
///
/// The composed paths are plain text: the root, the system's path separator and the names. Nothing
/// checks that the files exist.
class QRV_COMMON_EXPORT RootPath {
public:
    /// Takes `path` as a project root when it holds a folder ".qrv". Otherwise, with `create`,
    /// makes the folder `path` (with its parents, where they are missing) and ".qrv" in it;
    /// without, fails. Parent folders are not searched. `path` must hold a character that is not a
    /// separator.
    ///
    /// Fails with a message that names `path` when it is no repository, or when one of the folders
    /// cannot be made; the project folder stays then if it was made.
    static Expected<RootPath> get(const OdString& path, bool create);

    /// The root, without a trailing separator.
    OdString path() const { return path_; }
    /// True only when the very call of `get` that gave this root made the metadata folder.
    bool isNew() const { return isNew_; }

    /// The metadata folder of any folder.
    static OdString qrvPath(const OdString& root);
    /// The metadata folder.
    OdString qrvPath() const { return qrvPath(path_); }
    /// The state file.
    OdString statePath() const;
    /// The history database, which the library only names: the host keeps it.
    OdString dbPath() const;
    /// The folder of the ignore file and the project name.
    OdString propertiesPath() const;
    /// The activity log.
    OdString logPath() const;

    /// The path of `relative` below the root. Nothing is checked.
    OdString pathTo(const OdString& relative) const;
    /// What stands behind the root and a separator in `path`, possibly nothing. Letters and
    /// separators must be the root's own; otherwise, and for the root itself, fails with a message
    /// that names `path`.
    Expected<OdString> relativePathTo(const OdString& path) const;

private:
    RootPath(const OdString& path, bool isNew);

    OdString path_;
    bool isNew_;
};

/// "tf", the two characters with which the storage URL of a drawing begins.
QRV_COMMON_EXPORT OdString repositoryExt();

}  // namespace common
