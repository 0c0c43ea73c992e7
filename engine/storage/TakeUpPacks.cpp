#include <engine/paths/Layout.h>
#include <engine/storage/Packs.h>

#include <algorithm>
#include <bit>
#include <utility>

namespace qrv {

namespace {

// Of so many packs of one size class the next one of that class takes up the others.
constexpr std::size_t mostOfClass = 8;
// A class spans a factor of eight.
constexpr int bitsOfClass = 3;
// What has grown so far is not written once more.
constexpr std::int64_t largestTaken = fullPackBytes / 2;

// What the tables of a new pack take at least.
constexpr std::int64_t smallestTables = 300;

int classOf(std::int64_t sizeBytes) {
    return static_cast<int>(std::bit_width(static_cast<std::uint64_t>(sizeBytes))) / bitsOfClass;
}

/// All entries with their sketches, one block after the other.
Expected<std::vector<KeptEntry>> keptByBlock(const PackReader& pack) {
    const Expected<std::vector<PackEntry>> entries = pack.entries();
    if (!entries)
        return entries.error();
    const Expected<std::vector<PackSketch>> sketches = pack.sketches();
    if (!sketches)
        return sketches.error();
    std::vector<KeptEntry> kept;
    for (const PackEntry& entry : *entries)
        kept.push_back({.entry = entry, .sketch = std::nullopt});
    for (const PackSketch& sketch : *sketches)
        kept[sketch.entry].sketch = sketch.sketch;
    std::stable_sort(kept.begin(), kept.end(), [](const KeptEntry& left, const KeptEntry& right) {
        return left.entry.block < right.entry.block;
    });
    return kept;
}

Expected<void> copyAll(const PackReader& from, PackWriter& writer) {
    const Expected<std::vector<KeptEntry>> kept = keptByBlock(from);
    if (!kept)
        return kept.error();
    for (auto begin = kept->begin(); begin != kept->end();) {
        const auto end = std::find_if(begin, kept->end(), [&](const KeptEntry& each) {
            return each.entry.block != begin->entry.block;
        });
        const Expected<PackBlock> block = from.block(begin->entry.block);
        if (!block)
            return block.error();
        if (Expected<void> copied = writer.copy(from, *block, {begin, end}); !copied)
            return copied;
        begin = end;
    }
    return {};
}

/// Whether the writer has none of the contents: what lies in two packs was made against different
/// things there, of which nobody knows here which is still needed.
bool isDisjoint(const PackReader& pack, const PackWriter& writer) {
    const Expected<std::vector<PackEntry>> entries = pack.entries();
    return entries && std::none_of(entries->begin(), entries->end(), [&](const PackEntry& entry) {
               return writer.contains(entry.digest);
           });
}

}  // namespace

// Those whose class is full with the new one, and then perhaps those of the class that it grows
// into, and so on.
std::vector<std::size_t> Packs::smallOnes() const {
    std::vector<std::size_t> taken;
    std::int64_t sizeBytes = writer_->sizeBytes() + smallestTables;
    for (bool goesOn = true; goesOn;) {
        goesOn = false;
        std::vector<std::size_t> smaller;
        std::size_t alike = 0;
        std::int64_t theirBytes = 0;
        for (std::size_t which = 0; which < packs_.size(); ++which) {
            if (!packs_[which].reader ||
                std::find(taken.begin(), taken.end(), which) != taken.end())
                continue;
            const std::int64_t packBytes = packs_[which].reader->trailer().fileBytes();
            if (packBytes > largestTaken || classOf(packBytes) > classOf(sizeBytes))
                continue;
            smaller.push_back(which);
            theirBytes += packBytes;
            alike += classOf(packBytes) == classOf(sizeBytes) ? 1U : 0U;
        }
        if (alike >= mostOfClass && sizeBytes + theirBytes <= fullPackBytes) {
            taken.insert(taken.end(), smaller.begin(), smaller.end());
            sizeBytes += theirBytes;
            goesOn = true;
        }
    }
    return taken;
}

// A pack with damage stays as it is, so that nobody is told less about it.
Expected<std::vector<std::string>> Packs::takeUpSmallOnes() {
    std::vector<std::string> taken;
    // Whoever cannot list them cannot write there either, and says so.
    if (!list())
        return taken;
    for (const std::size_t which : smallOnes()) {
        const PackReader& pack = *packs_[which].reader;
        const Expected<std::vector<OdString>> damage = pack.damage();
        if (!damage || !damage->empty() || writer_->isFull() || !isDisjoint(pack, *writer_))
            continue;
        if (const Expected<void> copied = copyAll(pack, *writer_); !copied)
            return copied.error();
        taken.push_back(packs_[which].name);
    }
    return taken;
}

void Packs::removeTaken(const std::vector<std::string>& taken) {
    for (const std::string& name : taken) {
        // One that stays only takes room.
        static_cast<void>(root_.removeFile(layout::packPath(name)));
    }
}

}  // namespace qrv
