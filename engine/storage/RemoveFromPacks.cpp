#include <engine/base/SystemFailure.h>
#include <engine/paths/Layout.h>
#include <engine/storage/Packs.h>
#include <engine/storage/StorageMessages.h>

#include <algorithm>
#include <utility>

namespace qrv {

namespace {

/// The entries of a pack, one block after the other.
Expected<std::vector<PackEntry>> entriesByBlock(const PackReader& pack) {
    Expected<std::vector<PackEntry>> entries = pack.entries();
    if (entries)
        std::stable_sort(
            entries->begin(), entries->end(),
            [](const PackEntry& left, const PackEntry& right) { return left.block < right.block; });
    return entries;
}

bool hasDigest(std::span<const PackEntry> entries, const DigestBytes& digest) {
    return std::any_of(entries.begin(), entries.end(),
                       [&](const PackEntry& entry) { return entry.digest == digest; });
}

/// Whether the pack has the contents, or something that builds on them.
Expected<bool> isConcerned(const PackReader& pack, const DigestBytes& digest) {
    const Expected<std::optional<PackedContents>> found = pack.find(digest);
    if (found && *found)
        return true;
    for (std::int64_t number = 0; number < pack.trailer().blockCount; ++number) {
        const Expected<PackBlock> block = pack.block(static_cast<std::uint32_t>(number));
        if (block && block->base == digest && block->kind == BlockKind::difference)
            return true;
    }
    return false;
}

}  // namespace

// Blocks that are not concerned are taken over; of the others, what is to stay is added anew.
Expected<void> Packs::addWithout(PackWriter& writer, const PackReader& from,
                                 const DigestBytes& digest) {
    const Expected<std::vector<PackEntry>> all = entriesByBlock(from);
    if (!all)
        return all.error();
    std::span<const PackEntry> left = *all;
    while (!left.empty()) {
        const auto end = std::find_if(left.begin(), left.end(), [&](const PackEntry& entry) {
            return entry.block != left.front().block;
        });
        const auto entries = left.first(static_cast<std::size_t>(end - left.begin()));
        left = left.subspan(entries.size());
        const Expected<PackBlock> block = from.block(entries.front().block);
        if (!block)
            return block.error();
        if (!hasDigest(entries, digest) && block->base != digest) {
            std::vector<KeptEntry> kept;
            for (const PackEntry& entry : entries)
                kept.push_back({.entry = entry, .sketch = std::nullopt});
            if (Expected<void> copied = writer.copy(from, *block, kept); !copied)
                return copied;
            continue;
        }
        for (const PackEntry& entry : entries) {
            if (entry.digest == digest)
                continue;
            const Expected<std::unique_ptr<VersionReader>> contents = open(entry.digest);
            const Expected<Bytes> bytes = contents ? readWhole(**contents) : contents.error();
            if (!bytes)
                return bytes.error();
            if (Expected<void> added =
                    writer.add(entry.digest, bytes->span(), std::nullopt, std::nullopt);
                !added)
                return added;
        }
    }
    return {};
}

Expected<void> Packs::remove(const DigestBytes& digest) {
    if (Expected<void> flushed = flush(); !flushed)
        return flushed;
    const Expected<std::vector<std::string>> all = names();
    if (!all)
        return all.error();
    for (const std::string& name : *all) {
        const Expected<std::shared_ptr<const PackReader>> pack = openPack(name);
        if (!pack)
            return pack.error();
        const Expected<bool> concerned = isConcerned(**pack, digest);
        if (!concerned)
            return concerned.error();
        if (!*concerned)
            continue;
        PackWriter writer(root_);
        if (const Expected<void> added = addWithout(writer, **pack, digest); !added)
            return cannotWrite(OdString(layout::packsFolder), added.error().message);
        const Expected<std::string> written = writer.finish();
        if (!written)
            return written.error();
        if (const std::error_code error = root_.removeFile(layout::packPath(name)))
            return cannotRemove(layout::packPath(name), error);
    }
    forget();
    return {};
}

}  // namespace qrv
