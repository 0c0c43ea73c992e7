#pragma once

#include <common/storage/StorageUrl.h>
#include <engine/storage/DrawingStorage.h>
#include <engine/storage/HostStorage.h>
#include <engine/storage/ObjectStorage.h>

namespace qrv {

/// The two storages of a repository, and which one is asked.
class Storages {
public:
    explicit Storages(DrawingStorage::PreviousUrl previousUrl);

    /// See `HostStorage::use`.
    void use(const common::RootPath& root, const sys::Folder& folder);

    /// The one that keeps the version `url`.
    HostStorage& ofUrl(const OdString& url);
    /// The one that is to keep the file `path`.
    HostStorage& ofFile(const OdString& path);
    ObjectStorage& objects() { return objects_; }
    DrawingStorage& drawings() { return drawings_; }

private:
    ObjectStorage objects_;
    DrawingStorage drawings_;
};

}  // namespace qrv
