#include <engine/base/Bytes.h>
#include <engine/base/Digest.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/storage/FrameReader.h>
#include <engine/storage/ReadToEnd.h>
#include <engine/storage/Sketch.h>
#include <engine/storage/StorageMessages.h>
#include <engine/storage/StoreContents.h>
#include <engine/storage/WorkingFileReader.h>

#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace qrv {

namespace {

constexpr std::int64_t alwaysInMemory = std::int64_t{16} << 20;
// Of shorter contents a difference saves nothing.
constexpr std::int64_t shortestContinued = 1024;

/// Whether contents of that digest need not be stored. Then they count as new again.
bool isKept(const std::string& digest, std::int64_t sizeBytes, const StoreRequest& request) {
    const DigestBytes bytes = toDigestBytes(digest);
    if (request.packs.has(bytes)) {
        const Expected<std::optional<PackedContents>> place = request.packs.find(bytes);
        if (place && *place && (**place).sizeBytes == sizeBytes && request.packs.renew(**place))
            return true;
    }
    return request.isKeptElsewhere(digest, sizeBytes);
}

struct Hashed {
    std::string digest;
    std::int64_t sizeBytes = 0;
};

sys::Outcome<Hashed> hashContents(const sys::NewFile& object) {
    sys::Outcome<sys::InputFile> contents = object.contents();
    if (!contents)
        return contents.error();
    Digest digest;
    CopyBuffer buffer;
    std::int64_t sizeBytes = 0;
    const std::error_code error = readToEnd(*contents, buffer, [&](std::span<const char> piece) {
        digest.add(piece);
        sizeBytes += std::ssize(piece);
        return std::error_code();
    });
    if (error)
        return error;
    return Hashed{.digest = digest.finish(), .sizeBytes = sizeBytes};
}

/// What new contents are to be kept against, with its contents.
struct Base {
    NextBase place;
    Bytes contents;
};

/// What the contents continue, or else the most similar ones.
std::optional<NextBase> placeOfBase(const std::optional<Sketch>& sketch,
                                    const StoreRequest& request) {
    if (request.previous) {
        if (std::optional<NextBase> next = request.packs.baseAfter(*request.previous))
            return next;
    }
    if (!sketch)
        return std::nullopt;
    const std::vector<NextBase> similar = request.similar.basesFor(*sketch, 1);
    return similar.empty() ? std::nullopt : std::optional(similar.front());
}

/// Nothing when there is none, when both together are too long, and when the base is damaged.
std::optional<Base> baseFor(std::int64_t sizeBytes, const std::optional<Sketch>& sketch,
                            const StoreRequest& request) {
    if (sizeBytes < shortestContinued)
        return std::nullopt;
    const std::optional<NextBase> next = placeOfBase(sketch, request);
    if (!next)
        return std::nullopt;
    const Expected<std::unique_ptr<VersionReader>> reader = request.packs.open(next->digest);
    if (!reader || *reader == nullptr || (*reader)->sizeBytes() > request.longestSpan - sizeBytes)
        return std::nullopt;
    Expected<Bytes> contents = readWhole(**reader);
    if (!contents)
        return std::nullopt;
    return Base{.place = *next, .contents = std::move(*contents)};
}

bool fitsIntoMemory(std::int64_t sizeBytes, const StoreRequest& request) {
    return sizeBytes <= alwaysInMemory || (request.previous && sizeBytes < request.longestSpan);
}

Expected<std::string> storeFromMemory(WorkingFileReader& file, const RelativePath& path,
                                      const StoreRequest& request) {
    const Expected<Bytes> contents = readWhole(file);
    if (!contents)
        return contents.error();
    std::string digest = Digest::of(contents->view());
    if (isKept(digest, contents->size(), request))
        return digest;
    const std::optional<Sketch> sketch = Sketching::of(contents->span());
    const std::optional<Base> base = baseFor(contents->size(), sketch, request);
    std::optional<DifferenceBase> against;
    if (base)
        against = {.digest = base->place.digest,
                   .contents = base->contents.span(),
                   .depth = base->place.depth,
                   .roundStart = base->place.roundStart};
    const Expected<void> added =
        request.packs.writer().add(toDigestBytes(digest), contents->span(), against, sketch);
    if (!added)
        return cannotStore(path.text(), added.error().message);
    if (sketch)
        request.similar.add(toDigestBytes(digest), *sketch);
    return digest;
}

struct Known {
    std::string digest;
    std::optional<Sketch> sketch;
};

Expected<Known> readThrough(VersionReader& file) {
    Digest digest;
    Sketching sketching;
    CopyBuffer buffer(file.sizeBytes());
    const Expected<void> read =
        readToEnd(file, buffer, [&](std::span<const char> bytes) -> Expected<void> {
            digest.add(bytes);
            sketching.add(bytes);
            return {};
        });
    if (!read)
        return read.error();
    return Known{.digest = digest.finish(), .sketch = sketching.finish()};
}

// The first reading tells whether there is anything to write.
Expected<std::string> storeStreamed(const sys::Folder& root, WorkingFileReader& file,
                                    const RelativePath& path, const StoreRequest& request) {
    const Expected<Known> known = readThrough(file);
    if (!known)
        return known.error();
    if (isKept(known->digest, file.sizeBytes(), request))
        return known->digest;
    const Expected<std::unique_ptr<WorkingFileReader>> again = WorkingFileReader::open(root, path);
    if (!again)
        return again.error();
    const Expected<DigestBytes> added = request.packs.writer().addStreamed(**again, known->sketch);
    if (!added)
        return added.error();
    if ((**again).stamp() != file.stamp())
        return cannotStore(path.text(), tr(L"it changes while it is read"));
    return toDigits(*added);
}

// Hashed in the object, because the file may change at any moment. Nothing when no blocks can be
// shared.
Expected<std::optional<std::string>> storeSharing(WorkingFileReader& file, const RelativePath& path,
                                                  const StoreRequest& request) {
    ObjectFolder* const objects = request.sharing;
    if (objects == nullptr || file.sizeBytes() <= std::int64_t{CopyBuffer::largest} ||
        !objects->canShareBlocks(file.file()))
        return std::optional<std::string>();
    Expected<std::optional<sys::NewFile>> object = objects->share(file.file(), path.text());
    if (!object)
        return std::move(object).error();
    if (!*object)
        return std::optional<std::string>();
    const sys::Outcome<Hashed> hashed = hashContents(**object);
    if (!hashed)
        return cannotStore(path.text(), causeOf(hashed.error()));
    const sys::Outcome<sys::FileStamp> after = file.file().stamp();
    if (!after || *after != file.stamp() || hashed->sizeBytes != file.sizeBytes())
        return cannotStore(path.text(), tr(L"it changes while it is read"));
    if (!isKept(hashed->digest, hashed->sizeBytes, request)) {
        if (Expected<void> kept = objects->keep(hashed->digest, std::move(**object), path.text());
            !kept)
            return std::move(kept).error();
    }
    return std::optional(hashed->digest);
}

Expected<std::string> store(const sys::Folder& root, WorkingFileReader& file,
                            const RelativePath& path, const StoreRequest& request) {
    const Expected<std::optional<std::string>> shared = storeSharing(file, path, request);
    if (!shared)
        return shared.error();
    if (*shared)
        return **shared;
    return fitsIntoMemory(file.sizeBytes(), request) ? storeFromMemory(file, path, request)
                                                     : storeStreamed(root, file, path, request);
}

bool hasChangedSince(const sys::Folder& root, const RelativePath& path,
                     const sys::FileStamp& before) {
    const sys::Outcome<sys::FileStamp> now = root.stamp(path.bytes());
    return now && *now != before;
}

}  // namespace

Expected<StoredContents> storeContents(const sys::Folder& root, const RelativePath& path,
                                       const StoreRequest& request) {
    if (const Expected<void> hasRoom = request.packs.makeRoom(); !hasRoom)
        return hasRoom.error();
    for (bool isRetry = false;; isRetry = true) {
        const Expected<std::unique_ptr<WorkingFileReader>> file =
            WorkingFileReader::open(root, path);
        if (!file)
            return file.error();
        Expected<std::string> digest = store(root, **file, path, request);
        if (digest)
            return StoredContents{.digest = std::move(*digest), .stamp = (**file).stamp()};
        if (isRetry || !hasChangedSince(root, path, (**file).stamp()))
            return digest.error();
    }
}

}  // namespace qrv
