#include <engine/maintenance/BaseSearch.h>
#include <engine/storage/Zstd.h>

#include <algorithm>
#include <utility>

namespace qrv {

namespace {

/// Of the most similar ones, so many are tried; of long contents one.
constexpr std::size_t mostTried = 4;
constexpr std::int64_t longestTriedOften = std::int64_t{1} << 20;
/// With a difference this many times smaller than the contents nothing else is tried.
constexpr std::int64_t clearlyWorthFactor = 16;
/// How many of the similar ones are looked at for room behind them.
constexpr std::size_t mostLooks = 16;

}  // namespace

BaseSearch::BaseSearch(const Holdings& holdings, const PackingPlan& plan, ItemReader& reader)
    : holdings_(holdings), plan_(plan), reader_(reader), chains_(holdings, plan) {
    learnKept();
}

// What lies in packs that stay may be similar, too.
void BaseSearch::learnKept() {
    for (const Holder& holder : holdings_.holders) {
        if (!holder.pack || holder.isTakenUp)
            continue;
        const Expected<std::vector<PackSketch>> sketches = holder.pack->sketches();
        if (!sketches)
            continue;
        for (const PackSketch& sketch : *sketches) {
            const Expected<PackEntry> entry = holder.pack->entry(sketch.entry);
            const std::uint32_t item = entry ? plan_.find(entry->digest) : PackItem::none;
            if (item == PackItem::none)
                continue;
            similar_.add(sketch.sketch);
            similarItems_.push_back(item);
        }
    }
}

std::vector<BaseSearch::Base> BaseSearch::candidates(std::uint32_t item,
                                                     const std::optional<Sketch>& sketch) const {
    std::vector<Base> bases;
    addCandidate(bases, plan_.items[item].newer);
    if (!sketch)
        return bases;
    const std::size_t most = plan_.items[item].sizeBytes <= longestTriedOften ? mostTried : 1;
    for (const SimilarityIndex::Match& match : similar_.mostSimilar(*sketch, mostLooks)) {
        if (bases.size() > most)
            break;
        addCandidate(bases, similarItems_[match.number]);
    }
    return bases;
}

void BaseSearch::addCandidate(std::vector<Base>& bases, std::uint32_t item) const {
    if (item == PackItem::none)
        return;
    const std::optional<NextInChain> next = chains_.after(item);
    if (!next || plan_.items[next->item].sizeBytes > longestWithBase)
        return;
    const bool isKnown = std::any_of(bases.begin(), bases.end(),
                                     [&](const Base& base) { return base.item == next->item; });
    if (!isKnown)
        bases.push_back({.item = next->item, .next = next->next, .contents = nullptr});
}

std::optional<BaseSearch::Base> BaseSearch::find(std::uint32_t item, const Bytes& contents,
                                                 const std::optional<Sketch>& sketch) {
    std::optional<Base> best;
    // What is short is compressed together with its neighbours, which are its other versions.
    if (contents.size() < shortestSketchedBytes)
        return best;
    std::int64_t bestBytes = 0;
    for (Base& base : candidates(item, sketch)) {
        if (best && best->item == plan_.items[item].newer &&
            bestBytes * clearlyWorthFactor < contents.size())
            break;
        base.contents = reader_.contentsOf(base.item);
        if (!base.contents)
            continue;
        const Expected<Bytes> frame =
            compressFrame(contents.span(), base.contents->span(), Effort::quick);
        if (!frame || (best && bestBytes <= frame->size()))
            continue;
        bestBytes = frame->size();
        best = std::move(base);
    }
    return best;
}

void BaseSearch::note(std::uint32_t item, const Base* base, const std::optional<Sketch>& sketch) {
    const NextBase alone = {.depth = 1, .roundStart = 1};
    const NextBase& next = base == nullptr ? alone : base->next;
    chains_.note(item, base == nullptr ? PackItem::none : base->item, next);
    if (!sketch || next.depth > deepestSketched)
        return;
    similar_.add(*sketch);
    similarItems_.push_back(item);
}

}  // namespace qrv
