#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/paths/Layout.h>
#include <engine/paths/RelativePath.h>
#include <engine/storage/ObjectFolder.h>
#include <engine/storage/ObjectStorage.h>
#include <engine/storage/StorageMessages.h>
#include <engine/storage/StoreObject.h>

#include <map>
#include <string>
#include <utility>

namespace qrv {

namespace {

/// The pack's database throws where the storages answer errors.
template <class Call>
auto withoutException(Call call) -> decltype(call()) {
    try {
        return call();
    } catch (const DatabaseError& error) {
        return ErrorMessage{error.description()};
    }
}

Expected<StoredFile> storeFrom(ObjectFolder& objects, const sys::Folder& root,
                               const RelativePath& path) {
    constexpr int attempts = 2;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        sys::Outcome<sys::InputFile> source = root.openFile(path.bytes());
        const sys::Outcome<sys::FileStamp> stamp = source ? source->stamp() : source.error();
        if (!stamp)
            return cannotStore(path.text(), causeOf(stamp.error()));
        const Expected<std::optional<std::string>> digest =
            storeObject(objects, *source, *stamp, path.text());
        if (!digest)
            return digest.error();
        if (*digest)
            return StoredFile{.url = objectUrl(OdString::fromNarrow(**digest)), .stamp = *stamp};
    }
    return cannotStore(path.text(), tr(L"it changes while it is read"));
}

}  // namespace

struct ObjectStorage::Implementation {
    std::map<OdString, ObjectFolder> folders;
};

ObjectStorage::ObjectStorage() : implementation_(std::make_unique<Implementation>()) {
}

ObjectStorage::~ObjectStorage() = default;

Expected<ObjectFolder*> ObjectStorage::objectsOf(const common::RootPath& root) {
    std::map<OdString, ObjectFolder>& folders = implementation_->folders;
    const auto known = folders.find(root.path());
    if (known != folders.end())
        return &known->second;
    const Expected<sys::Folder> rootFolder = folderOf(root);
    if (!rootFolder)
        return rootFolder.error();
    return &folders.try_emplace(root.path(), root, *rootFolder).first->second;
}

Expected<StoredFile> ObjectStorage::storeFile(const common::RootPath& root,
                                              const RelativePath& path) {
    const Expected<sys::Folder> folder = folderOf(root);
    if (!folder)
        return folder.error();
    const Expected<ObjectFolder*> objects = objectsOf(root);
    if (!objects)
        return objects.error();
    if (const Expected<void> opened = (*objects)->openForChange(); !opened)
        return opened.error();
    return withoutException([&] { return storeFrom(**objects, *folder, path); });
}

Expected<void> ObjectStorage::flush(const common::RootPath& root) {
    const Expected<ObjectFolder*> objects = objectsOf(root);
    if (!objects)
        return objects.error();
    return (*objects)->flush();
}

template <class Answer, class Call>
Answer ObjectStorage::onObject(const common::RootPath& root, const OdString& url, Answer ifDrawing,
                               Call call) {
    const Expected<CheckedUrl> checked = CheckedUrl::check(url);
    if (!checked)
        return checked.error();
    if (checked->isDrawing())
        return ifDrawing;
    const Expected<ObjectFolder*> objects = objectsOf(root);
    if (!objects)
        return objects.error();
    return withoutException([&] { return call(**objects, checked->digest().toNarrow()); });
}

Expected<std::unique_ptr<VersionReader>> ObjectStorage::open(const common::RootPath& root,
                                                             const OdString& url) {
    using Version = Expected<std::unique_ptr<VersionReader>>;
    return onObject(root, url, Version(nullptr),
                    [&](ObjectFolder& objects, const std::string& digest) {
                        return objects.read(digest, url);
                    });
}

Expected<bool> ObjectStorage::renew(const common::RootPath& root, const OdString& url) {
    return onObject(root, url, Expected<bool>(false),
                    [](ObjectFolder& objects, const std::string& digest) {
                        return Expected<bool>(objects.renew(digest));
                    });
}

Expected<bool> ObjectStorage::contains(const common::RootPath& root, const OdString& url) {
    return onObject(root, url, Expected<bool>(false),
                    [](ObjectFolder& objects, const std::string& digest) {
                        return Expected<bool>(objects.contains(digest));
                    });
}

Expected<void> ObjectStorage::remove(const common::RootPath& root, const OdString& url) {
    return onObject(root, url, Expected<void>(),
                    [&](ObjectFolder& objects, const std::string& digest) {
                        return objects.remove(digest, url);
                    });
}

Expected<void> ObjectStorage::removePlain(const common::RootPath& root, const std::string& digest) {
    const Expected<sys::Folder> folder = folderOf(root);
    if (!folder)
        return folder.error();
    const std::string path = layout::objectPath(digest);
    if (const std::error_code error = folder->removeFile(path))
        return cannotRemove(path, error);
    return {};
}

Expected<std::vector<OdString>> ObjectStorage::revisions(const common::RootPath& root,
                                                         const OdString& url) {
    const Expected<bool> isKept = contains(root, url);
    if (!isKept)
        return isKept.error();
    return *isKept ? std::vector<OdString>{url} : std::vector<OdString>();
}

}  // namespace qrv
