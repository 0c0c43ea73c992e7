#include <engine/base/Digest.h>
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
#include <engine/storage/WorkingFileReader.h>
#include <engine/storage/Zstd.h>
#include <sys/Folder.h>

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

Expected<void> makeStoresFolder(const sys::Folder& folder) {
    const sys::Outcome<sys::FileStatus> status = folder.status(layout::storesFolder);
    if (status && status->kind == sys::FileKind::folder)
        return {};
    std::error_code error = folder.makeFolders(layout::storesFolder);
    if (!error)
        error = folder.flush(layout::metadataFolder);
    if (error)
        return cannotUse(layout::storesFolder, causeOf(error));
    return {};
}

FrameStore openStore(const sys::Folder& folder, const common::RootPath& root, const OdString& store,
                     Database::Access access) {
    const std::string path = layout::drawingStorePath(store);
    auto database =
        std::make_shared<Database>(folder, path, root.pathTo(OdString::fromNarrow(path)), access);
    return {std::move(database), access, drawingLayout};
}

// A revision, and the store that would keep it.
struct Place {
    // Null when there is none.
    std::unique_ptr<FrameStore> store;
    CheckedUrl url;

    std::optional<Frame> frame() const {
        return store ? store->find(url.digest().toNarrow()) : std::nullopt;
    }
};

Expected<Place> placeOf(const sys::Folder& folder, const common::RootPath& root,
                        const OdString& url, Database::Access access) {
    const Expected<CheckedUrl> checked = CheckedUrl::check(url);
    if (!checked)
        return checked.error();
    if (!checked->isDrawing())
        return Place{.store = nullptr, .url = *checked};
    const std::string path = layout::drawingStorePath(checked->store());
    const sys::Outcome<sys::FileStatus> status = folder.status(path);
    if (!status && sys::meansAbsent(status.error()))
        return Place{.store = nullptr, .url = *checked};
    if (!status)
        return cannotUse(path, causeOf(status.error()));
    return Place{
        .store = std::make_unique<FrameStore>(openStore(folder, root, checked->store(), access)),
        .url = *checked};
}

// One try to add the working file: the digest of its contents.
Expected<std::string> addTo(FrameStore& store, WorkingFileReader& file, const Line& line) {
    DatabaseTransaction transaction(store.database());
    std::optional<Frame> previous;
    if (line.previous)
        previous = store.find(*line.previous);
    if (!previous)
        previous = store.newest();
    Expected<FrameStore::Added> added = store.add(file, previous);
    if (!added)
        return std::move(added).error();
    transaction.commit();
    return std::move(added->frame.digest);
}

}  // namespace

DrawingStorage::DrawingStorage(PreviousUrl previousUrl) : previousUrl_(std::move(previousUrl)) {
}

Expected<OdString> DrawingStorage::store(const common::RootPath& root, const OdString& path) try {
    const Expected<RelativePath> checked = RelativePath::check(path);
    if (!checked)
        return checked.error();
    const Expected<sys::Folder> folder = folderOf(root);
    if (!folder)
        return folder.error();
    const Expected<Line> line = lineOf(*checked, previousUrl_(path));
    if (!line)
        return line.error();
    for (bool isRetry = false;; isRetry = true) {
        const Expected<std::unique_ptr<WorkingFileReader>> file =
            WorkingFileReader::open(*folder, *checked);
        if (!file)
            return file.error();
        if (Expected<void> made = makeStoresFolder(*folder); !made)
            return made.error();
        FrameStore store = openStore(*folder, root, line->store, Database::Access::create);
        const Expected<std::string> digest = addTo(store, **file, *line);
        if (digest) {
            // It may have been there already, in a file that nobody wrote to for long.
            if (const std::error_code error =
                    folder->refresh(layout::drawingStorePath(line->store), ageToRefresh))
                return cannotUse(layout::drawingStorePath(line->store), causeOf(error));
            return drawingUrl(line->store, OdString::fromNarrow(*digest));
        }
        if (isRetry || !(**file).hasChanged())
            return digest.error();
    }
} catch (const DatabaseError& error) {
    return ErrorMessage{error.description()};
}

Expected<std::unique_ptr<VersionReader>> DrawingStorage::open(const common::RootPath& root,
                                                              const OdString& url) try {
    const Expected<sys::Folder> folder = folderOf(root);
    if (!folder)
        return folder.error();
    const Expected<Place> place = placeOf(*folder, root, url, Database::Access::readOnly);
    if (!place)
        return place.error();
    const std::optional<Frame> frame = place->frame();
    if (!frame)
        return std::unique_ptr<VersionReader>();
    return place->store->open(*frame);
} catch (const DatabaseError& error) {
    return ErrorMessage{error.description()};
}

Expected<bool> DrawingStorage::renew(const common::RootPath& root, const OdString& url) {
    Expected<bool> isKept = contains(root, url);
    if (!isKept || !*isKept)
        return isKept;
    const Expected<sys::Folder> folder = folderOf(root);
    if (!folder)
        return folder.error();
    return !folder->refresh(layout::drawingStorePath(CheckedUrl::check(url)->store()),
                            ageToRefresh);
}

Expected<bool> DrawingStorage::contains(const common::RootPath& root, const OdString& url) try {
    const Expected<sys::Folder> folder = folderOf(root);
    if (!folder)
        return folder.error();
    const Expected<Place> place = placeOf(*folder, root, url, Database::Access::readOnly);
    if (!place)
        return place.error();
    return place->frame().has_value();
} catch (const DatabaseError& error) {
    return ErrorMessage{error.description()};
}

Expected<void> DrawingStorage::remove(const common::RootPath& root, const OdString& url) try {
    const Expected<sys::Folder> folder = folderOf(root);
    if (!folder)
        return folder.error();
    const Expected<Place> place = placeOf(*folder, root, url, Database::Access::readWrite);
    if (!place)
        return place.error();
    if (!place->store)
        return {};
    DatabaseTransaction transaction(place->store->database());
    if (const std::optional<Frame> frame = place->frame()) {
        Expected<void> removed = place->store->remove(*frame);
        if (!removed)
            return removed;
    }
    transaction.commit();
    return {};
} catch (const DatabaseError& error) {
    return ErrorMessage{error.description()};
}

Expected<std::vector<OdString>> DrawingStorage::revisions(const common::RootPath& root,
                                                          const OdString& url) try {
    const Expected<sys::Folder> folder = folderOf(root);
    if (!folder)
        return folder.error();
    const Expected<Place> place = placeOf(*folder, root, url, Database::Access::readOnly);
    if (!place)
        return place.error();
    std::vector<OdString> urls;
    if (!place->store)
        return urls;
    for (const Frame& frame : place->store->frames())
        urls.push_back(drawingUrl(place->url.store(), OdString::fromNarrow(frame.digest)));
    return urls;
} catch (const DatabaseError& error) {
    return ErrorMessage{error.description()};
}

std::unique_ptr<FrameStore> openDrawingStore(const sys::Folder& folder,
                                             const common::RootPath& root, const OdString& store) {
    const sys::Outcome<sys::FileStatus> status = folder.status(layout::drawingStorePath(store));
    if (!status && sys::meansAbsent(status.error()))
        return nullptr;
    return std::make_unique<FrameStore>(openStore(folder, root, store, Database::Access::readOnly));
}

}  // namespace qrv
