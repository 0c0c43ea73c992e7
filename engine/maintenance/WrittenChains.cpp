#include <engine/maintenance/WrittenChains.h>

namespace qrv {

WrittenChains::WrittenChains(const Holdings& holdings, const PackingPlan& plan)
    : holdings_(holdings), plan_(plan), written_(plan.items.size()) {
}

void WrittenChains::note(std::uint32_t item, std::uint32_t base, const NextBase& next) {
    written_[item] = {.base = base, .depth = next.depth, .roundStart = next.roundStart};
}

// What stays in its pack keeps its place there.
WrittenChains::Link WrittenChains::linkOf(std::uint32_t item) const {
    const PackItem& asked = plan_.items[item];
    for (std::uint32_t i = 0; asked.isKept && i < asked.holdingCount; ++i) {
        const Holder& holder = holdings_.holders[holdings_.all[asked.firstHolding + i].holder];
        if (holder.isTakenUp || !holder.pack)
            continue;
        const Expected<std::optional<PackedContents>> found = holder.pack->find(asked.digest);
        if (!found || !*found)
            continue;
        const PackBlock& block = (**found).block;
        return {
            .base = block.kind == BlockKind::difference ? plan_.find(block.base) : PackItem::none,
            .depth = block.depth,
            .roundStart = block.roundStart};
    }
    return written_[item];
}

std::optional<NextInChain> WrittenChains::after(std::uint32_t item) const {
    const Link end = linkOf(item);
    if (end.depth == 0)
        return std::nullopt;
    const auto nextBehind = [&](std::uint32_t base, int depth, int roundStart) {
        return NextInChain{.item = base,
                           .next = {.digest = plan_.items[base].digest,
                                    .depth = static_cast<std::uint8_t>(depth),
                                    .roundStart = static_cast<std::uint8_t>(roundStart)}};
    };
    if (end.depth < longestChain)
        return nextBehind(item, end.depth + 1, end.roundStart);
    if (end.roundStart >= longestChain)
        return std::nullopt;
    std::uint32_t base = item;
    for (Link link = end; link.depth != end.roundStart; link = linkOf(base)) {
        // In a pack that was tampered with, depths need not fall by one.
        if (link.base == PackItem::none || linkOf(link.base).depth + 1 != link.depth)
            return std::nullopt;
        base = link.base;
    }
    return nextBehind(base, end.roundStart + 1, end.roundStart + 1);
}

}  // namespace qrv
