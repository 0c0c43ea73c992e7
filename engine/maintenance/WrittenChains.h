#pragma once

#include <engine/maintenance/Holdings.h>
#include <engine/maintenance/PackingPlan.h>
#include <engine/storage/Packs.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace qrv {

/// What the next contents are made against, by the item and by what its block says.
struct NextInChain {
    std::uint32_t item = PackItem::none;
    NextBase next;
};

/// What was made against what while packs are written anew. The packs themselves cannot be asked:
/// the old ones, which have the same contents in other chains, are still there.
class WrittenChains {
public:
    WrittenChains(const Holdings& holdings, const PackingPlan& plan);

    /// The item was written against `base`, at the depth and in the round of `next`.
    void note(std::uint32_t item, std::uint32_t base, const NextBase& next);
    /// As `Packs::baseAfter`: nothing when the item is neither written nor in a pack that stays.
    std::optional<NextInChain> after(std::uint32_t item) const;

private:
    /// A depth of 0 means that it is not there.
    struct Link {
        std::uint32_t base = PackItem::none;
        std::uint8_t depth = 0;
        std::uint8_t roundStart = 0;
    };

    Link linkOf(std::uint32_t item) const;

    const Holdings& holdings_;
    const PackingPlan& plan_;
    std::vector<Link> written_;
};

}  // namespace qrv
