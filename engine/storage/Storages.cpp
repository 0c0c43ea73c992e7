#include <engine/storage/Storages.h>

namespace qrv {

Storages::Storages(const PreviousUrl& previousUrl)
    : objects_(previousUrl, packs_), drawings_(previousUrl, packs_) {
}

void Storages::use(const common::RootPath& root, const sys::Folder& folder) {
    objects_.use(root, folder);
    drawings_.use(root, folder);
}

HostStorage& Storages::ofUrl(const OdString& url) {
    if (common::urlToType(url) == common::FileStorage::Drawing)
        return drawings_;
    return objects_;
}

HostStorage& Storages::ofFile(const OdString& path) {
    if (common::fileToType(path) == common::FileStorage::Drawing)
        return drawings_;
    return objects_;
}

}  // namespace qrv
