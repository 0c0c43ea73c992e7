#include <engine/base/Digest.h>
#include <engine/base/SystemFailure.h>
#include <engine/storage/ReadToEnd.h>
#include <engine/storage/StorageMessages.h>
#include <engine/storage/StoreObject.h>

#include <cstddef>
#include <span>
#include <utility>

namespace qrv {

namespace {

using MaybeDigest = std::optional<std::string>;

struct Hashed {
    std::string digest;
    std::int64_t sizeBytes = 0;
};

/// Hashes what comes piece by piece.
class Hashing {
public:
    void add(std::span<const char> piece) {
        digest_.add(piece);
        sizeBytes_ += std::ssize(piece);
    }
    Hashed finish() { return {.digest = digest_.finish(), .sizeBytes = sizeBytes_}; }

private:
    Digest digest_;
    std::int64_t sizeBytes_ = 0;
};

sys::Outcome<Hashed> hashContents(const sys::NewFile& object, CopyBuffer& buffer) {
    sys::Outcome<sys::InputFile> contents = object.contents();
    if (!contents)
        return contents.error();
    Hashing hashing;
    const std::error_code error = readToEnd(*contents, buffer, [&](std::span<const char> piece) {
        hashing.add(piece);
        return std::error_code();
    });
    if (error)
        return error;
    return hashing.finish();
}

/// The first bytes of the source are in the full buffer. Blocks that are shared are hashed in the
/// object, because the source may change at any moment.
sys::Outcome<Hashed> copyAndHash(ObjectFolder& objects, sys::NewFile& object,
                                 sys::InputFile& source, CopyBuffer& buffer) {
    if (objects.sharesBlocks(object, source))
        return hashContents(object, buffer);
    Hashing hashing;
    const auto take = [&](std::span<const char> piece) {
        hashing.add(piece);
        return object.write(piece);
    };
    std::error_code error = take(buffer.first(buffer.size()));
    if (!error)
        error = readToEnd(source, buffer, take);
    if (error)
        return error;
    return hashing.finish();
}

bool isStill(const sys::FileStamp& before, const sys::InputFile& source, std::int64_t bytesRead) {
    const sys::Outcome<sys::FileStamp> after = source.stamp();
    return bytesRead == before.sizeBytes && after && *after == before;
}

sys::Outcome<MaybeDigest> keep(ObjectFolder& objects, sys::NewFile object,
                               const std::string& digest, const OdString& path) {
    if (const std::error_code error = object.close())
        return error;
    objects.keep(digest, std::move(object), path);
    return MaybeDigest(digest);
}

/// The whole file is in memory, so that nothing is written for an object that is there already.
sys::Outcome<MaybeDigest> storeSmall(ObjectFolder& objects, std::span<const char> contents,
                                     const OdString& path) {
    const std::string digest = Digest::of({contents.data(), contents.size()});
    if (objects.hasWhole(digest, std::ssize(contents)))
        return MaybeDigest(digest);
    sys::Outcome<sys::NewFile> object = objects.begin();
    if (!object)
        return object.error();
    if (const std::error_code error = object->write(contents))
        return error;
    return keep(objects, std::move(*object), digest, path);
}

sys::Outcome<MaybeDigest> storeLarge(ObjectFolder& objects, sys::InputFile& source,
                                     CopyBuffer& buffer, const sys::FileStamp& before,
                                     const OdString& path) {
    sys::Outcome<sys::NewFile> object = objects.begin();
    if (!object)
        return object.error();
    const sys::Outcome<Hashed> hashed = copyAndHash(objects, *object, source, buffer);
    if (!hashed)
        return hashed.error();
    if (!isStill(before, source, hashed->sizeBytes))
        return MaybeDigest();
    if (objects.hasWhole(hashed->digest, hashed->sizeBytes))
        return MaybeDigest(hashed->digest);
    return keep(objects, std::move(*object), hashed->digest, path);
}

sys::Outcome<MaybeDigest> store(ObjectFolder& objects, sys::InputFile& source,
                                const sys::FileStamp& before, const OdString& path) {
    CopyBuffer buffer(before.sizeBytes);
    const sys::Outcome<std::size_t> count = source.read(buffer.span());
    if (!count)
        return count.error();
    if (*count == buffer.size() && buffer.size() == CopyBuffer::largest)
        return storeLarge(objects, source, buffer, before, path);
    if (!isStill(before, source, static_cast<std::int64_t>(*count)))
        return MaybeDigest();
    return storeSmall(objects, buffer.first(*count), path);
}

}  // namespace

Expected<std::optional<std::string>> storeObject(ObjectFolder& objects, sys::InputFile& source,
                                                 const sys::FileStamp& before,
                                                 const OdString& path) {
    const sys::Outcome<MaybeDigest> digest = store(objects, source, before, path);
    if (!digest)
        return cannotStore(path, causeOf(digest.error()));
    return *digest;
}

}  // namespace qrv
