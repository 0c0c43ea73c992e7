#include <engine/base/Digest.h>
#include <engine/base/DigestBytes.h>
#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/database/Database.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/paths/Layout.h>
#include <engine/paths/RelativePath.h>
#include <engine/storage/Age.h>
#include <engine/storage/DrawingStorage.h>
#include <engine/storage/FrameStore.h>
#include <engine/storage/StorageMessages.h>
#include <engine/storage/StoreContents.h>
#include <engine/storage/Zstd.h>
#include <sys/Folder.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

namespace qrv {

namespace {

// A difference that saves less than a tenth only makes the chain longer.
constexpr FrameLayout drawingLayout = {.applicationId = 0x71727664,  // "qrvd"
                                       .longestChain = 16,
                                       .longestSpanBytes = longestSpanBytes,
                                       .worthPercent = 90};

constexpr int digitsOfStoreName = 32;

// Where a drawing goes on, and the revision that it continues, if that is known.
struct Line {
    OdString store;
    std::optional<std::string> previous;
};

Expected<Line> lineOf(const RelativePath& path, const OdString& previousUrl) {
    const Line fresh = {
        .store = OdString::fromNarrow(Digest::of(path.bytes())).left(digitsOfStoreName),
        .previous = std::nullopt};
    if (previousUrl.isEmpty())
        return fresh;
    const Expected<CheckedUrl> url = CheckedUrl::check(previousUrl);
    if (!url)
        return url.error();
    if (!url->isDrawing())
        return fresh;
    return Line{.store = url->store(), .previous = url->digest().toNarrow()};
}

ErrorMessage cannotUse(const std::string& path, const OdString& cause) {
    return {OdString::format(tr(L"'%ls' cannot be used: %ls"),
                             printable(OdString::fromNarrow(path)), cause)};
}

FrameStore openStoreFile(const sys::Folder& folder, const common::RootPath& root,
                         const OdString& store, Database::Access access) {
    const std::string path = layout::drawingStorePath(store);
    auto database =
        std::make_shared<Database>(folder, path, root.pathTo(OdString::fromNarrow(path)), access);
    return {std::move(database), access, drawingLayout};
}

// Null when there is none.
Expected<std::unique_ptr<FrameStore>> existingStore(const sys::Folder& folder,
                                                    const common::RootPath& root,
                                                    const OdString& store,
                                                    Database::Access access) {
    const std::string path = layout::drawingStorePath(store);
    const sys::Outcome<sys::FileStatus> status = folder.status(path);
    if (!status && sys::meansAbsent(status.error()))
        return std::unique_ptr<FrameStore>();
    if (!status)
        return cannotUse(path, causeOf(status.error()));
    return std::make_unique<FrameStore>(openStoreFile(folder, root, store, access));
}

std::optional<Frame> frameOf(FrameStore& store, const CheckedUrl& url) {
    return store.find(url.digest().toNarrow());
}

std::vector<OdString> urlsOf(FrameStore& store, const OdString& name) {
    std::vector<OdString> urls;
    for (const Frame& frame : store.frames())
        urls.push_back(drawingUrl(name, OdString::fromNarrow(frame.digest)));
    return urls;
}

Expected<void> removeFrom(FrameStore& store, const CheckedUrl& url) {
    DatabaseTransaction transaction(store.database());
    if (const std::optional<Frame> frame = frameOf(store, url)) {
        if (Expected<void> removed = store.remove(*frame); !removed)
            return removed;
    }
    transaction.commit();
    return {};
}

}  // namespace

DrawingStorage::DrawingStorage(PreviousUrl previousUrl, std::shared_ptr<PacksByRoot> packs)
    : HostStorage(std::move(packs)), previousUrl_(std::move(previousUrl)) {
}

Expected<StoredFile> DrawingStorage::storeFile(const common::RootPath& root,
                                               const RelativePath& path) {
    const Expected<sys::Folder> folder = folderOf(root);
    if (!folder)
        return folder.error();
    const Expected<PacksInUse*> inUse = packsInUse(root);
    if (!inUse)
        return inUse.error();
    const Expected<Line> line = lineOf(path, previousUrl_(path.text()));
    if (!line)
        return line.error();
    const auto isKeptElsewhere = [&](const std::string& digest, std::int64_t) {
        const Expected<bool> isKept =
            renewOld(root, drawingUrl(line->store, OdString::fromNarrow(digest)));
        return isKept && *isKept;
    };
    const StoreRequest request = {
        .packs = (*inUse)->packs,
        .similar = (*inUse)->similar,
        .previous = line->previous ? std::optional(toDigestBytes(*line->previous)) : std::nullopt,
        .longestSpan = longestSpanBytes,
        .isKeptElsewhere = isKeptElsewhere,
        .sharing = nullptr};
    const Expected<StoredContents> stored = storeContents(*folder, path, request);
    if (!stored)
        return stored.error();
    return StoredFile{.url = drawingUrl(line->store, OdString::fromNarrow(stored->digest)),
                      .stamp = stored->stamp};
}

// What the database throws becomes the answer.
template <class Answer, class Call>
Answer DrawingStorage::onStore(const common::RootPath& root, const OdString& store,
                               Database::Access access, Answer ifMissing, Call call) try {
    const Expected<sys::Folder> folder = folderOf(root);
    if (!folder)
        return folder.error();
    const Expected<std::unique_ptr<FrameStore>> found = existingStore(*folder, root, store, access);
    if (!found)
        return found.error();
    return *found ? call(**found) : std::move(ifMissing);
} catch (const DatabaseError& error) {
    return ErrorMessage{error.description()};
}

template <class Answer, class Call>
Answer DrawingStorage::onRevision(const common::RootPath& root, const OdString& url,
                                  Database::Access access, Answer ifMissing, Call call) {
    const Expected<CheckedUrl> checked = CheckedUrl::check(url);
    if (!checked)
        return checked.error();
    if (!checked->isDrawing())
        return ifMissing;
    return onStore(root, checked->store(), access, std::move(ifMissing),
                   [&](FrameStore& store) { return call(store, *checked); });
}

// Where the packs have the revision: nothing when they have not.
Expected<std::optional<PackedContents>> DrawingStorage::placeInPacks(const common::RootPath& root,
                                                                     const OdString& url) {
    const Expected<CheckedUrl> checked = CheckedUrl::check(url);
    if (!checked)
        return checked.error();
    if (!checked->isDrawing())
        return std::optional<PackedContents>();
    const Expected<Packs*> packs = packsOf(root);
    if (!packs)
        return packs.error();
    return (*packs)->find(toDigestBytes(checked->digest().toNarrow()));
}

Expected<std::unique_ptr<VersionReader>> DrawingStorage::open(const common::RootPath& root,
                                                              const OdString& url) {
    using Version = Expected<std::unique_ptr<VersionReader>>;
    const Expected<std::optional<PackedContents>> place = placeInPacks(root, url);
    if (place && *place)
        return (*packsOf(root))->open(**place);
    Version old = onRevision(root, url, Database::Access::readOnly, Version(nullptr),
                             [](FrameStore& store, const CheckedUrl& checked) {
                                 const std::optional<Frame> frame = frameOf(store, checked);
                                 return frame ? store.open(*frame) : Version(nullptr);
                             });
    // A pack that cannot be read may have had it.
    return old && *old == nullptr && !place ? Version(place.error()) : std::move(old);
}

Expected<bool> DrawingStorage::renew(const common::RootPath& root, const OdString& url) {
    const Expected<std::optional<PackedContents>> place = placeInPacks(root, url);
    if (place && *place)
        return (*packsOf(root))->renew(**place);
    return renewOld(root, url);
}

Expected<bool> DrawingStorage::renewOld(const common::RootPath& root, const OdString& url) {
    Expected<bool> isKept = containsOld(root, url);
    if (!isKept || !*isKept)
        return isKept;
    const Expected<sys::Folder> folder = folderOf(root);
    if (!folder)
        return folder.error();
    const OdString store = CheckedUrl::check(url)->store();
    return !folder->refresh(layout::drawingStorePath(store), ageToRefresh);
}

Expected<bool> DrawingStorage::contains(const common::RootPath& root, const OdString& url) {
    const Expected<std::optional<PackedContents>> place = placeInPacks(root, url);
    if (place && *place)
        return true;
    Expected<bool> isKept = containsOld(root, url);
    return isKept && !*isKept && !place ? Expected<bool>(place.error()) : std::move(isKept);
}

Expected<bool> DrawingStorage::containsOld(const common::RootPath& root, const OdString& url) {
    return onRevision(root, url, Database::Access::readOnly, Expected<bool>(false),
                      [](FrameStore& store, const CheckedUrl& checked) {
                          return Expected<bool>(frameOf(store, checked).has_value());
                      });
}

Expected<void> DrawingStorage::remove(const common::RootPath& root, const OdString& url) {
    const Expected<std::optional<PackedContents>> place = placeInPacks(root, url);
    if (!place)
        return place.error();
    if (*place) {
        if (Expected<void> removed = (*packsOf(root))->remove((**place).digest); !removed)
            return removed;
    }
    return onRevision(root, url, Database::Access::readWrite, Expected<void>(), removeFrom);
}

Expected<std::vector<OdString>> DrawingStorage::revisions(const common::RootPath& root,
                                                          const OdString& url) {
    using Urls = Expected<std::vector<OdString>>;
    const Expected<std::optional<PackedContents>> place = placeInPacks(root, url);
    if (!place)
        return place.error();
    Urls urls = onRevision(root, url, Database::Access::readOnly, Urls(std::vector<OdString>()),
                           [](FrameStore& store, const CheckedUrl& checked) {
                               return Urls(urlsOf(store, checked.store()));
                           });
    if (urls && *place && std::find(urls->begin(), urls->end(), url) == urls->end())
        urls->push_back(url);
    return urls;
}

Expected<std::vector<OdString>> DrawingStorage::revisionsIn(const common::RootPath& root,
                                                            const OdString& name) {
    using Urls = Expected<std::vector<OdString>>;
    return onStore(root, name, Database::Access::readOnly, Urls(std::vector<OdString>()),
                   [&](FrameStore& store) { return Urls(urlsOf(store, name)); });
}

Expected<std::unique_ptr<FrameStore>> DrawingStorage::openStore(const common::RootPath& root,
                                                                const OdString& store) {
    const Expected<sys::Folder> folder = folderOf(root);
    if (!folder)
        return folder.error();
    return existingStore(*folder, root, store, Database::Access::readOnly);
}

Expected<void> DrawingStorage::removeStore(const common::RootPath& root, const OdString& store) {
    const Expected<sys::Folder> folder = folderOf(root);
    if (!folder)
        return folder.error();
    const std::string path = layout::drawingStorePath(store);
    if (const std::error_code error = folder->removeFile(path))
        return cannotRemove(path, error);
    return {};
}

}  // namespace qrv
