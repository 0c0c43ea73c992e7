#include <engine/storage/SimilarContents.h>

#include <string>
#include <utility>

namespace qrv {

namespace {

constexpr std::uint32_t addedHere = 0xFFFFFFFF;
/// Of the best ones, so many are looked at for room behind them.
constexpr std::size_t mostLooks = 8;

}  // namespace

SimilarContents::SimilarContents(Packs& packs) : packs_(packs) {
}

void SimilarContents::load() {
    isLoaded_ = true;
    const Expected<std::vector<std::string>> names = packs_.names();
    for (const std::string& name : names ? *names : std::vector<std::string>()) {
        if (Expected<std::shared_ptr<const PackReader>> pack = packs_.openPack(name))
            load(std::move(*pack));
    }
}

void SimilarContents::load(std::shared_ptr<const PackReader> pack) {
    const Expected<std::vector<PackSketch>> sketches = pack->sketches();
    if (!sketches || sketches->empty())
        return;
    const auto number = static_cast<std::uint32_t>(readers_.size());
    readers_.push_back(std::move(pack));
    for (const PackSketch& row : *sketches) {
        index_.add(row.sketch);
        origins_.push_back({.pack = number, .row = row.entry});
    }
}

void SimilarContents::add(const DigestBytes& digest, const Sketch& sketch) {
    if (!isLoaded_)
        load();
    const int depth = packs_.writer().depthOf(digest);
    if (depth == 0 || depth > deepestSketched)
        return;
    index_.add(sketch);
    origins_.push_back({.pack = addedHere, .row = static_cast<std::uint32_t>(added_.size())});
    added_.push_back(digest);
}

std::optional<DigestBytes> SimilarContents::digestOf(const Origin& origin) const {
    if (origin.pack == addedHere)
        return added_[origin.row];
    const Expected<PackEntry> entry = readers_[origin.pack]->entry(origin.row);
    return entry ? std::optional(entry->digest) : std::nullopt;
}

// One whose chain is full would lead to another one, which may have nothing in common with the
// contents.
std::optional<NextBase> SimilarContents::baseOf(const DigestBytes& digest) {
    const Expected<std::optional<PackedContents>> found = packs_.find(digest);
    if (!found || !*found || (**found).block.depth > deepestSketched)
        return std::nullopt;
    return packs_.baseAfter(digest);
}

std::vector<NextBase> SimilarContents::basesFor(const Sketch& sketch, std::size_t atMost) {
    if (!isLoaded_)
        load();
    std::vector<NextBase> bases;
    for (const SimilarityIndex::Match& match : index_.mostSimilar(sketch, mostLooks)) {
        if (bases.size() == atMost)
            break;
        if (const std::optional<DigestBytes> digest = digestOf(origins_[match.number])) {
            if (const std::optional<NextBase> base = baseOf(*digest))
                bases.push_back(*base);
        }
    }
    return bases;
}

}  // namespace qrv
