#pragma once

#include <engine/base/DigestBytes.h>
#include <engine/history/History.h>
#include <engine/maintenance/Holdings.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qrv {

/// Some contents, wherever they lie.
struct PackItem {
    static constexpr std::uint32_t none = 0xFFFFFFFF;

    DigestBytes digest = {};
    std::int64_t sizeBytes = 0;
    /// Its places in `Holdings::all`.
    std::uint32_t firstHolding = 0;
    std::uint32_t holdingCount = 0;
    /// Whether it lies in a pack that stays as it is.
    bool isKept = false;
    bool isNamed = false;
    /// Where the name begins under which the newest commit names it, in `PackingPlan::names`.
    std::uint32_t name = none;
    /// How many others were met before it, from the newest commit to the oldest.
    std::uint32_t age = none;
    /// The next version of the same file.
    std::uint32_t newer = none;
};

/// What comes into new packs, and in which order: what is likely to be alike lies side by side, by
/// the ending of the name and then by the path, and of one file the newest version comes first.
/// Others are made against it, so that what is needed most is read at once.
struct PackingPlan {
    /// Everything that is kept, ordered by digest.
    std::vector<PackItem> items;
    /// The named ones that are to be written, in order.
    std::vector<std::uint32_t> order;
    /// Those that nobody names, but not for long.
    std::vector<std::uint32_t> waiting;
    /// Those that are dropped.
    std::vector<std::uint32_t> dropped;
    /// Names one behind the other, each with a NUL behind it.
    std::string names;

    /// Which item has the digest; `PackItem::none` when there is none.
    std::uint32_t find(const DigestBytes& digest) const;
    std::string_view nameOf(const PackItem& item) const;
};

/// May throw `DatabaseError`.
PackingPlan planPacking(const Holdings& holdings, const NamedVersions& named, History& history);

}  // namespace qrv
