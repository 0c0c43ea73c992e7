#include <common/base/MessageInternal.h>
#include <common/state/Index.h>
#include <common/storage/FileStorage.h>

namespace common {

FileStorage::~FileStorage() = default;

// The URL comes by value, as in the overrides of hosts.
Expected<void> FileStorage::merge(const OdString& file, const OdString& path, const OdString&,
                                  OdString url,  // NOLINT(performance-unnecessary-value-param)
                                  const RootPath& root, const IoInterface& io) {
    if (!io.acceptsPath(file))
        return {};
    const Expected<bool> isFound = restore(root, url, path);
    if (!isFound)
        return isFound.error();
    if (!*isFound)
        return translatedError(L"Could not find %ls in the storage", path);
    return {};
}

Expected<bool> FileStorage::inFileUpdate(const RootPath& root, IoInterfaceRef&, Cache& cache,
                                         const Versions<VersionedFile, VersionedFile>& versions,
                                         FileChange change) {
    const VersionedFile& remote = versions.previous;
    if (change != FileChange::unchanged) {
        updateConflictData(
            cache, ConflictData(remote.path, remote.storagePath, FileChange::modified, change));
        return false;
    }
    const Expected<bool> isFound = restore(root, remote.storagePath, remote.path);
    if (!isFound)
        return isFound.error();
    updateIndex(remote.path, cache, root, false);
    return true;
}

Expected<DiffHandles> FileStorage::getLocalChanges(const RootPath&, const OdString&,
                                                   const OdString&, IoInterfaceRef&, bool) {
    return DiffHandles();
}

}  // namespace common
