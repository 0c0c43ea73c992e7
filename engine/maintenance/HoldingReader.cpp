#include <engine/maintenance/HoldingReader.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/storage/StorageMessages.h>

#include <utility>

namespace qrv {

namespace {

using Version = Expected<std::unique_ptr<VersionReader>>;

Version orNotKept(Version version, const DigestBytes& digest) {
    if (version && *version == nullptr)
        return notKept(objectUrl(OdString::fromNarrow(toDigits(digest))));
    return version;
}

}  // namespace

HoldingReader::HoldingReader(Repository& repository, const Holdings& holdings)
    : repository_(repository), holdings_(holdings), packs_(repository.folder()) {
}

Version HoldingReader::openPacked(const PackReader& pack, const DigestBytes& digest) {
    const Expected<std::optional<PackedContents>> found = pack.find(digest);
    if (!found)
        return found.error();
    return *found ? packs_.open(**found) : Version(nullptr);
}

Version HoldingReader::openFrame(std::uint32_t holder, const std::string& digest) {
    if (!store_ || storeHolder_ != holder) {
        Expected<std::unique_ptr<FrameStore>> opened = repository_.storages().drawings().openStore(
            repository_.root(), OdString::fromNarrow(holdings_.holders[holder].name));
        if (!opened)
            return std::move(opened).error();
        store_ = std::move(*opened);
        storeHolder_ = holder;
    }
    const std::optional<Frame> frame = store_ ? store_->find(digest) : std::nullopt;
    return frame ? store_->open(*frame) : Version(nullptr);
}

Version HoldingReader::open(const Holding& holding) {
    const Holder& holder = holdings_.holders[holding.holder];
    const std::string digest = toDigits(holding.digest);
    switch (holder.kind) {
        case Holder::Kind::pack:
            return orNotKept(openPacked(*holder.pack, holding.digest), holding.digest);
        case Holder::Kind::objects:
            return orNotKept(repository_.storages().objects().open(
                                 repository_.root(), objectUrl(OdString::fromNarrow(digest))),
                             holding.digest);
        case Holder::Kind::oldPack:
            if (!oldPack_)
                oldPack_ = PackFile::open(repository_.folder(), repository_.root());
            return orNotKept(oldPack_ ? oldPack_->read(digest) : Version(nullptr), holding.digest);
        case Holder::Kind::store:
            return orNotKept(openFrame(holding.holder, digest), holding.digest);
    }
    return orNotKept(Version(nullptr), holding.digest);
}

}  // namespace qrv
