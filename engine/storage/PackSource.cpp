#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/storage/PackSource.h>

#include <utility>

namespace qrv {

std::optional<PackedContents> placeOf(std::shared_ptr<const PackSource> source,
                                      const PackEntry& entry, const PackBlock& block) {
    PackedContents place = {.source = std::move(source),
                            .digest = entry.digest,
                            .sizeBytes = entry.sizeBytes,
                            .block = block,
                            .blockNumber = entry.block,
                            .position = entry.position};
    // Of contents that have a block of their own, the entry has the lower half of the size.
    if (place.position == 0 && static_cast<std::uint32_t>(block.sizeBytes) == entry.sizeBytes)
        place.sizeBytes = block.sizeBytes;
    if (place.position + place.sizeBytes > block.sizeBytes ||
        (block.kind == BlockKind::difference && !place.isAlone()))
        return std::nullopt;
    return place;
}

ErrorMessage damagedContents(const PackedContents& contents, const OdString& cause) {
    return {OdString::format(tr(L"The version %ls in '%ls' is damaged: %ls"),
                             OdString::fromNarrow(toDigits(contents.digest)),
                             printable(contents.source->path), cause)};
}

}  // namespace qrv
