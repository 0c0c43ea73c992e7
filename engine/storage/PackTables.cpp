#include <engine/storage/PackTables.h>

#include <algorithm>
#include <numeric>
#include <string>

namespace qrv {

namespace {

constexpr std::size_t firstSlots = 64;
// So many bytes of a table are handed over at a time.
constexpr std::size_t portionBytes = 256UL << 10;

/// Collects rows and hands them over in large pieces.
class Portions {
public:
    explicit Portions(const PackTables::Write& write) : write_(write) {}

    template <class Row>
    void add(const Row& row) {
        append(bytes_, row);
        if (bytes_.size() >= portionBytes)
            handOver();
    }
    std::error_code finish() {
        handOver();
        return error_;
    }

private:
    void handOver() {
        if (!error_)
            error_ = write_(bytes_);
        bytes_.clear();
    }

    const PackTables::Write& write_;
    std::string bytes_;
    std::error_code error_;
};

}  // namespace

std::uint32_t PackTables::addBlock() {
    blocks_.emplace_back();
    return static_cast<std::uint32_t>(blocks_.size() - 1);
}

// Where the digest stands, or the free slot where it would.
std::size_t PackTables::slotOf(const DigestBytes& digest) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = beginningOf(digest) & mask;
    while (slots_[slot] != 0 && entries_[slots_[slot] - 1].digest != digest)
        slot = (slot + 1) & mask;
    return slot;
}

void PackTables::grow() {
    slots_.assign(std::max(firstSlots, slots_.size() * 2), 0);
    for (std::uint32_t index = 0; index < entries_.size(); ++index)
        slots_[slotOf(entries_[index].digest)] = index + 1;
}

void PackTables::addEntry(const PackEntry& entry, const std::optional<Sketch>& sketch) {
    if ((entries_.size() + 1) * 2 > slots_.size())
        grow();
    const std::size_t slot = slotOf(entry.digest);
    entries_.push_back(entry);
    slots_[slot] = static_cast<std::uint32_t>(entries_.size());
    if (sketch)
        sketches_.push_back(
            {.entry = static_cast<std::uint32_t>(entries_.size() - 1), .sketch = *sketch});
}

const PackEntry* PackTables::find(const DigestBytes& digest) const {
    if (slots_.empty())
        return nullptr;
    const std::uint32_t found = slots_[slotOf(digest)];
    return found == 0 ? nullptr : &entries_[found - 1];
}

std::vector<std::uint32_t> PackTables::inOrder() const {
    std::vector<std::uint32_t> order(entries_.size());
    std::iota(order.begin(), order.end(), 0U);
    std::sort(order.begin(), order.end(), [this](std::uint32_t left, std::uint32_t right) {
        return entries_[left].digest < entries_[right].digest;
    });
    return order;
}

std::error_code PackTables::write(std::int64_t blocksEnd, const Write& write,
                                  PackTrailer& trailer) const {
    Portions portions(write);
    for (const PackBlock& block : blocks_)
        portions.add(block);
    const std::vector<std::uint32_t> order = inOrder();
    std::string pages;
    std::string page;
    for (std::size_t row = 0; row < order.size(); ++row) {
        const PackEntry& entry = entries_[order[row]];
        portions.add(entry);
        append(page, entry);
        if ((row + 1) % entriesOfPage == 0 || row + 1 == order.size()) {
            const PackEntry& first = entries_[order[row / entriesOfPage * entriesOfPage]];
            append(pages, PackPage{.firstDigest = beginningOf(first.digest),
                                   .checksum = checksumOf(page)});
            page.clear();
        }
    }
    std::vector<std::uint32_t> rowOf(order.size());
    for (std::uint32_t row = 0; row < order.size(); ++row)
        rowOf[order[row]] = row;
    std::string sketches;
    for (const SketchOf& each : sketches_)
        append(sketches, PackSketch{.entry = rowOf[each.entry], .sketch = each.sketch});
    if (const std::error_code error = portions.finish())
        return error;
    trailer = {.blocksEnd = blocksEnd,
               .blockCount = std::ssize(blocks_),
               .entryCount = std::ssize(entries_),
               .sketchCount = std::ssize(sketches_),
               .sketchChecksum = checksumOf(sketches),
               .pageChecksum = checksumOf(pages)};
    std::string end = sketches + pages;
    append(end, trailer);
    append(end, trailer);
    return write(end);
}

}  // namespace qrv
