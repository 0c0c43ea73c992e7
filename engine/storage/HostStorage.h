#pragma once

#include <common/storage/FileStorage.h>
#include <engine/paths/RelativePath.h>
#include <engine/storage/Packs.h>
#include <engine/storage/SimilarContents.h>
#include <engine/storage/VersionReader.h>
#include <sys/FileStamp.h>
#include <sys/Folder.h>
#include <sys/NewFile.h>

#include <cstdint>
#include <map>
#include <memory>
#include <utility>

namespace qrv {

/// A working file as it was stored.
struct StoredFile {
    OdString url;
    /// What told the file from later ones while it was read; nobody wrote to it meanwhile.
    sys::FileStamp stamp;
};

/// The packs of a repository, and what new contents may be kept against there.
struct PacksInUse {
    explicit PacksInUse(sys::Folder root) : packs(std::move(root)), similar(packs) {}

    Packs packs;
    SimilarContents similar;
};

/// Those of each repository that a process works in, by its path. The storages share them.
using PacksByRoot = std::map<OdString, PacksInUse>;

/// What the storages of this program have in common: the packs, in which they keep all new
/// contents, and everything that reads a version out. Each contents is checked against its digest
/// before it gets a name anywhere, and appears there as a whole.
///
/// A URL that is not safe (see CheckedUrl) and a path that is not (see RelativePath) are errors of
/// every operation. So is a working file below a symbolic link.
class HostStorage : public common::FileStorage {
public:
    explicit HostStorage(std::shared_ptr<PacksByRoot> packs) : packs_(std::move(packs)) {}

    /// Reaches the files of that root beneath the handle that is open already, and not by its path
    /// once more.
    void use(const common::RootPath& root, const sys::Folder& folder) {
        folders_.insert_or_assign(root.path(), folder);
    }
    /// Stores a working file. When it changes while it is read, which its stamps before and after
    /// tell, it is tried once more, and then fails. The version is found at once, but is safe on
    /// the disk only after `flush`.
    virtual Expected<StoredFile> storeFile(const common::RootPath& root,
                                           const RelativePath& path) = 0;
    /// Hands everything that was stored since the last call, by this or by a storage that shares
    /// the packs, over to the disk, in one step. After a failure it is there as a whole or
    /// forgotten.
    virtual Expected<void> flush(const common::RootPath& root);
    /// The same by the text of the path, for whoever wants to know the URL alone.
    Expected<OdString> store(const common::RootPath& root, const OdString& path) override;
    /// Opens a version for reading; null when it is not kept here.
    virtual Expected<std::unique_ptr<VersionReader>> open(const common::RootPath& root,
                                                          const OdString& url) = 0;
    /// Whether the version is kept here. If so, it counts as new again, so that `gc` does not take
    /// it for long unused.
    virtual Expected<bool> renew(const common::RootPath& root, const OdString& url) = 0;
    /// Writes the version beside the working file `path`, with the permissions of the file that
    /// lies there, and leaves the rest, flushing and giving it the name, to the caller. The file is
    /// closed, so that any number of them can wait. Fails when the version is not kept here, and
    /// when a folder lies at the path.
    Expected<sys::NewFile> prepare(const common::RootPath& root, const OdString& url,
                                   const RelativePath& path);

    /// Writes a version below `target`, whatever repository or none that is, and makes the folders
    /// on the way. A file that is there is replaced, and its permissions are taken over, or stays,
    /// and it is an error. Fails when a link leads out of the target.
    Expected<void> exportBelow(const common::RootPath& root, const OdString& url,
                               const sys::Folder& target, const RelativePath& path,
                               sys::NewFile::Existing existing);
    /// The target's folder must exist. A file or link of the target's name is replaced, and its
    /// permissions are taken over.
    Expected<void> exportTo(const common::RootPath& root, const OdString& url,
                            const OdString& target) override;
    /// The new file takes over the permissions of the one that it replaces.
    Expected<bool> restore(const common::RootPath& root, const OdString& url,
                           const OdString& path) override;
    /// Equal versions do not differ. Of others this program knows nothing, as it does not look into
    /// drawings: an error.
    Expected<common::DiffHandles> compare(const common::RootPath& root, const OdString& url,
                                          const OdString& otherUrl) override;
    Expected<void> verify(const common::RootPath& root, const OdString& url) override;

protected:
    /// The root's folder, which is opened once and stays open: commands touch thousands of files
    /// below it.
    Expected<sys::Folder> folderOf(const common::RootPath& root);
    Expected<PacksInUse*> packsInUse(const common::RootPath& root);
    Expected<Packs*> packsOf(const common::RootPath& root);

private:
    std::shared_ptr<PacksByRoot> packs_;
    std::map<OdString, sys::Folder> folders_;
};

/// The permissions of a new working file, before the process's mask.
inline constexpr std::uint32_t workingFilePermissions = 0666;

}  // namespace qrv
