#pragma once

#include <common/storage/StorageUrl.h>
#include <engine/storage/DrawingStorage.h>
#include <engine/storage/HostStorage.h>
#include <engine/storage/ObjectStorage.h>

#include <memory>

namespace qrv {

/// The two storages of a repository, and which one is asked.
class Storages {
public:
    explicit Storages(const PreviousUrl& previousUrl);

    /// See `HostStorage::use`.
    void use(const common::RootPath& root, const sys::Folder& folder);

    /// The one that keeps the version `url`.
    HostStorage& ofUrl(const OdString& url);
    /// The one that is to keep the file `path`.
    HostStorage& ofFile(const OdString& path);
    /// Hands all that was stored since the last call over to the disk: see `HostStorage::flush`.
    Expected<void> flush(const common::RootPath& root) { return objects_.flush(root); }
    ObjectStorage& objects() { return objects_; }
    DrawingStorage& drawings() { return drawings_; }

private:
    std::shared_ptr<PacksByRoot> packs_ = std::make_shared<PacksByRoot>();
    ObjectStorage objects_;
    DrawingStorage drawings_;
};

}  // namespace qrv
