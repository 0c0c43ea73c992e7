#include <engine/base/Digest.h>
#include <engine/base/SystemFailure.h>
#include <engine/storage/CopyBuffer.h>
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

/// Hashes a file of which the first `count` bytes are in the buffer, and hands each piece to `use`,
/// which answers an error code.
template <class Use>
sys::Outcome<Hashed> hashRest(sys::InputFile& file, CopyBuffer& buffer, std::size_t count,
                              Use use) {
    Digest digest;
    std::int64_t total = 0;
    for (;;) {
        const std::span<const char> piece = buffer.first(count);
        digest.add(piece);
        total += std::ssize(piece);
        if (const std::error_code error = use(piece))
            return error;
        if (count < buffer.size())
            return Hashed{.digest = digest.finish(), .sizeBytes = total};
        const sys::Outcome<std::size_t> next = file.read(buffer.span());
        if (!next)
            return next.error();
        count = *next;
    }
}

sys::Outcome<Hashed> hashContents(const sys::NewFile& object, CopyBuffer& buffer) {
    sys::Outcome<sys::InputFile> contents = object.contents();
    if (!contents)
        return contents.error();
    const sys::Outcome<std::size_t> count = contents->read(buffer.span());
    if (!count)
        return count.error();
    return hashRest(*contents, buffer, *count,
                    [](std::span<const char>) { return std::error_code(); });
}

/// The first bytes of the source are in the full buffer. Blocks that are shared are hashed in the
/// object, because the source may change at any moment.
sys::Outcome<Hashed> copyAndHash(ObjectFolder& objects, sys::NewFile& object,
                                 sys::InputFile& source, CopyBuffer& buffer) {
    if (objects.sharesBlocks(object, source))
        return hashContents(object, buffer);
    return hashRest(source, buffer, buffer.size(),
                    [&](std::span<const char> piece) { return object.write(piece); });
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
                                const OdString& path) {
    const sys::Outcome<sys::FileStamp> before = source.stamp();
    if (!before)
        return before.error();
    CopyBuffer buffer(before->sizeBytes);
    const sys::Outcome<std::size_t> count = source.read(buffer.span());
    if (!count)
        return count.error();
    if (*count == buffer.size() && buffer.size() == CopyBuffer::largest)
        return storeLarge(objects, source, buffer, *before, path);
    if (!isStill(*before, source, static_cast<std::int64_t>(*count)))
        return MaybeDigest();
    return storeSmall(objects, buffer.first(*count), path);
}

}  // namespace

Expected<std::optional<std::string>> storeObject(ObjectFolder& objects, sys::InputFile& source,
                                                 const OdString& path) {
    const sys::Outcome<MaybeDigest> digest = store(objects, source, path);
    if (!digest)
        return cannotStore(path, causeOf(digest.error()));
    return *digest;
}

}  // namespace qrv
