#pragma once

#include <common/base/Expected.h>
#include <common/base/Export.h>
#include <common/repository/IoInterface.h>
#include <common/repository/RootPath.h>
#include <common/server/Commit.h>
#include <common/state/Cache.h>
#include <common/state/ConflictData.h>
#include <common/worktree/FileChange.h>
#include <platform/kernel/OdString.h>

#include <vector>

namespace common {

/// Keeps stored file versions and brings them back. The library decides when a version comes into
/// the working tree and when a conflict is recorded instead; how versions are kept is the host's,
/// in a class derived from this one.
///
/// The order of the operations is the order of the virtual table, which hosts rely on. All paths
/// are relative to the root, but for the target of `exportTo`. A `url` names a stored version
/// (StorageUrl.h).
class QRV_COMMON_EXPORT FileStorage {
public:
    /// The two ways of keeping a version. The numbers never change.
    enum Type {
        Drawing = 0,  ///< kept in the drawing store
        Plain = 1,    ///< kept as an object named by its digest
    };

    virtual ~FileStorage();

    /// Keeps the working file `path` and gives the storage URL of its contents.
    virtual Expected<OdString> store(const RootPath& root, const OdString& path) = 0;
    /// Whether the version is kept here.
    virtual Expected<bool> contains(const RootPath& root, const OdString& url) = 0;
    /// Writes the version to the file `target`, which may lie anywhere.
    virtual Expected<void> exportTo(const RootPath& root, const OdString& url,
                                    const OdString& target) = 0;
    /// Brings the version `url` into the working tree as `path`, unless `io` does not accept
    /// `file`: then succeeds without doing anything. `other` takes no part here. Fails with the
    /// error of `restore`, or when the version is not in the storage.
    virtual Expected<void> merge(const OdString& file, const OdString& path, const OdString& other,
                                 OdString url, const RootPath& root, const IoInterface& io);
    /// What differs between two versions of a drawing.
    virtual Expected<DiffHandles> compare(const RootPath& root, const OdString& url,
                                          const OdString& otherUrl) = 0;
    /// Takes over a remotely changed file, named by the second of `versions`. When it is
    /// `unchanged` here, its version is restored, its index entry refreshed and true given.
    /// Otherwise nothing is restored: a conflict of a local modification with the remote `change`
    /// is recorded in the cache and false given. Fails only with the error of `restore`; the cache
    /// is unchanged then. A version that is missing in the storage is no error here.
    virtual Expected<bool> inFileUpdate(const RootPath& root, IoInterfaceRef& io, Cache& cache,
                                        const Versions<VersionedFile, VersionedFile>& versions,
                                        FileChange change);
    /// Brings the version into the working tree as the file `path`: true when it was found in the
    /// storage, false when not, an error for anything else.
    virtual Expected<bool> restore(const RootPath& root, const OdString& url,
                                   const OdString& path) = 0;
    /// Forgets the version.
    virtual Expected<void> remove(const RootPath& root, const OdString& url) = 0;
    /// Checks that the version is whole; an error says what is wrong with it.
    virtual Expected<void> verify(const RootPath& root, const OdString& url) = 0;
    /// The storage URLs of all versions that are kept beside this one, oldest first.
    virtual Expected<std::vector<OdString>> revisions(const RootPath& root,
                                                      const OdString& url) = 0;
    /// The changes inside a drawing since its stored version. None here: storages that understand
    /// drawings override it.
    virtual Expected<DiffHandles> getLocalChanges(const RootPath& root, const OdString& file,
                                                  const OdString& other, IoInterfaceRef& io,
                                                  bool flag);
};

}  // namespace common
