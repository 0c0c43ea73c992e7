#include <engine/base/DigestBytes.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/paths/Layout.h>
#include <engine/paths/RelativePath.h>
#include <engine/storage/ObjectFolder.h>
#include <engine/storage/ObjectStorage.h>
#include <engine/storage/StorageMessages.h>
#include <engine/storage/StoreContents.h>

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

// Together with what they continue, contents are held in memory.
constexpr std::int64_t longestSpan = std::int64_t{256} << 20;

}  // namespace

struct ObjectStorage::Implementation {
    std::map<OdString, ObjectFolder> folders;
};

ObjectStorage::ObjectStorage(PreviousUrl previousUrl, std::shared_ptr<PacksByRoot> packs)
    : HostStorage(std::move(packs)),
      previousUrl_(std::move(previousUrl)),
      implementation_(std::make_unique<Implementation>()) {
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
    const Expected<PacksInUse*> inUse = packsInUse(root);
    if (!inUse)
        return inUse.error();
    const std::string previous = digestOfUrl(previousUrl_(path.text())).toNarrow();
    const StoreRequest request = {
        .packs = (*inUse)->packs,
        .similar = (*inUse)->similar,
        .previous = previous.empty() ? std::nullopt : std::optional(toDigestBytes(previous)),
        .longestSpan = longestSpan,
        .isKeptElsewhere =
            [&objects](const std::string& digest, std::int64_t sizeBytes) {
                return (*objects)->hasWhole(digest, sizeBytes);
            },
        .sharing = *objects};
    return withoutException([&]() -> Expected<StoredFile> {
        const Expected<StoredContents> stored = storeContents(*folder, path, request);
        if (!stored)
            return stored.error();
        return StoredFile{.url = objectUrl(OdString::fromNarrow(stored->digest)),
                          .stamp = stored->stamp};
    });
}

Expected<void> ObjectStorage::flush(const common::RootPath& root) {
    const Expected<ObjectFolder*> objects = objectsOf(root);
    if (!objects)
        return objects.error();
    if (Expected<void> flushed = (*objects)->flush(); !flushed)
        return flushed;
    return HostStorage::flush(root);
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
    const Expected<Packs*> packs = packsOf(root);
    if (!packs)
        return packs.error();
    return withoutException([&] { return call(**packs, **objects, checked->digest().toNarrow()); });
}

Expected<std::unique_ptr<VersionReader>> ObjectStorage::open(const common::RootPath& root,
                                                             const OdString& url) {
    using Version = Expected<std::unique_ptr<VersionReader>>;
    return onObject(root, url, Version(nullptr),
                    [&](Packs& packs, ObjectFolder& objects, const std::string& digest) {
                        Version packed = packs.open(toDigestBytes(digest));
                        if (packed && *packed != nullptr)
                            return packed;
                        Version found = objects.read(digest, url);
                        // A pack that cannot be read may have had it.
                        return found && *found == nullptr ? std::move(packed) : std::move(found);
                    });
}

Expected<bool> ObjectStorage::renew(const common::RootPath& root, const OdString& url) {
    return onObject(root, url, Expected<bool>(false),
                    [](Packs& packs, ObjectFolder& objects, const std::string& digest) {
                        const auto place = packs.find(toDigestBytes(digest));
                        if (place && *place)
                            return Expected<bool>(packs.renew(**place));
                        return Expected<bool>(objects.renew(digest));
                    });
}

Expected<bool> ObjectStorage::contains(const common::RootPath& root, const OdString& url) {
    return onObject(root, url, Expected<bool>(false),
                    [](Packs& packs, ObjectFolder& objects, const std::string& digest) {
                        const auto place = packs.find(toDigestBytes(digest));
                        if ((place && *place) || objects.contains(digest))
                            return Expected<bool>(true);
                        return place ? Expected<bool>(false) : Expected<bool>(place.error());
                    });
}

Expected<void> ObjectStorage::remove(const common::RootPath& root, const OdString& url) {
    return onObject(root, url, Expected<void>(),
                    [&](Packs& packs, ObjectFolder& objects, const std::string& digest) {
                        Expected<void> removed = packs.remove(toDigestBytes(digest));
                        return removed ? objects.remove(digest, url) : removed;
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
