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
#include <engine/storage/StorageMessages.h>
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

Expected<StoredFile> DrawingStorage::storeFile(const common::RootPath& root,
                                               const RelativePath& path) try {
    const Expected<sys::Folder> folder = folderOf(root);
    if (!folder)
        return folder.error();
    const Expected<Line> line = lineOf(path, previousUrl_(path.text()));
    if (!line)
        return line.error();
    for (bool isRetry = false;; isRetry = true) {
        const Expected<std::unique_ptr<WorkingFileReader>> file =
            WorkingFileReader::open(*folder, path);
        if (!file)
            return file.error();
        if (Expected<void> made = makeStoresFolder(*folder); !made)
            return made.error();
        FrameStore store = openStoreFile(*folder, root, line->store, Database::Access::create);
        const Expected<std::string> digest = addTo(store, **file, *line);
        if (digest) {
            // It may have been there already, in a file that nobody wrote to for long.
            if (const std::error_code error =
                    folder->refresh(layout::drawingStorePath(line->store), ageToRefresh))
                return cannotUse(layout::drawingStorePath(line->store), causeOf(error));
            return StoredFile{.url = drawingUrl(line->store, OdString::fromNarrow(*digest)),
                              .stamp = (**file).stamp()};
        }
        if (isRetry || !(**file).hasChanged())
            return digest.error();
    }
} catch (const DatabaseError& error) {
    return ErrorMessage{error.description()};
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

Expected<std::unique_ptr<VersionReader>> DrawingStorage::open(const common::RootPath& root,
                                                              const OdString& url) {
    using Version = Expected<std::unique_ptr<VersionReader>>;
    return onRevision(root, url, Database::Access::readOnly, Version(nullptr),
                      [](FrameStore& store, const CheckedUrl& checked) {
                          const std::optional<Frame> frame = frameOf(store, checked);
                          return frame ? store.open(*frame) : Version(nullptr);
                      });
}

Expected<bool> DrawingStorage::renew(const common::RootPath& root, const OdString& url) {
    Expected<bool> isKept = contains(root, url);
    if (!isKept || !*isKept)
        return isKept;
    const Expected<sys::Folder> folder = folderOf(root);
    if (!folder)
        return folder.error();
    const OdString store = CheckedUrl::check(url)->store();
    return !folder->refresh(layout::drawingStorePath(store), ageToRefresh);
}

Expected<bool> DrawingStorage::contains(const common::RootPath& root, const OdString& url) {
    return onRevision(root, url, Database::Access::readOnly, Expected<bool>(false),
                      [](FrameStore& store, const CheckedUrl& checked) {
                          return Expected<bool>(frameOf(store, checked).has_value());
                      });
}

Expected<void> DrawingStorage::remove(const common::RootPath& root, const OdString& url) {
    return onRevision(root, url, Database::Access::readWrite, Expected<void>(), removeFrom);
}

Expected<std::vector<OdString>> DrawingStorage::revisions(const common::RootPath& root,
                                                          const OdString& url) {
    using Urls = Expected<std::vector<OdString>>;
    return onRevision(root, url, Database::Access::readOnly, Urls(std::vector<OdString>()),
                      [](FrameStore& store, const CheckedUrl& checked) {
                          return Urls(urlsOf(store, checked.store()));
                      });
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
