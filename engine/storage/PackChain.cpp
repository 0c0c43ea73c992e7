#include <engine/base/Translation.h>
#include <engine/paths/Layout.h>
#include <engine/storage/Packs.h>
#include <engine/storage/Zstd.h>

#include <algorithm>
#include <utility>

namespace qrv {

// The same contents may lie in several packs, in each as a difference from something else: a
// collection turns chains round, and one that was interrupted leaves both. Whoever took whatever
// copy came first could go in a circle, so copies are tried until one leads to contents that stand
// alone.

namespace {

/// So many copies are tried for one chain: packs can be made in which there is no end of them.
constexpr int mostLooks = 256;

bool isSameCopy(const PackedContents& one, const PackedContents& other) {
    return one.source->path == other.source->path && one.blockNumber == other.blockNumber;
}

/// Whether the last of the chain can have been made against the base.
Expected<void> checkFits(const std::vector<PackedContents>& chain, const PackedContents& base) {
    const bool isCircle = std::any_of(chain.begin(), chain.end(), [&](const PackedContents& each) {
        return isSameCopy(each, base);
    });
    if (isCircle)
        return damagedContents(chain.front(), tr(L"it builds on too many others"));
    // Both are held in memory, and no difference is made of what is longer together.
    if (base.sizeBytes > longestSpanBytes)
        return damagedContents(chain.front(), tr(L"one that it builds on is too long"));
    if (chain.back().sizeBytes > longestSpanBytes - base.sizeBytes)
        return damagedContents(chain.front(), tr(L"its size is impossible"));
    return {};
}

}  // namespace

std::vector<PackedContents> Packs::copiesOf(const DigestBytes& digest, const PackSource& dependent,
                                            Where where) {
    std::vector<PackedContents> copies;
    const auto add = [&](const Expected<std::optional<PackedContents>>& found) {
        if (found && *found)
            copies.push_back(**found);
    };
    const bool isInWriter = dependent.path == OdString(layout::packsFolder);
    if (writer_ && writer_->contains(digest) && isInWriter == (where == Where::samePack))
        add(writer_->find(digest));
    for (const Pack& pack : packs_) {
        if (!pack.reader)
            continue;
        const bool isSame = pack.reader->source()->path == dependent.path;
        if (isSame == (where == Where::samePack))
            add(pack.reader->find(digest));
    }
    std::stable_sort(copies.begin(), copies.end(), [](const auto& one, const auto& other) {
        return one.block.depth < other.block.depth;
    });
    return copies;
}

Expected<void> Packs::extendBy(const PackedContents& base, std::vector<PackedContents>& chain,
                               int& looks) {
    if (Expected<void> fits = checkFits(chain, base); !fits)
        return fits;
    chain.push_back(base);
    Expected<void> extended = extend(chain, looks);
    if (!extended)
        chain.pop_back();
    return extended;
}

// The pack of the last one comes first, as most packs have all of a chain. It calls itself at most
// as often as a chain is long.
Expected<void> Packs::extend(std::vector<PackedContents>& chain, int& looks) {
    const PackedContents last = chain.back();
    if (last.block.kind != BlockKind::difference)
        return {};
    if (chain.size() == longestChain)
        return damagedContents(chain.front(), tr(L"it builds on too many others"));
    std::optional<ErrorMessage> failure;
    for (const Where where : {Where::samePack, Where::elsewhere}) {
        for (const PackedContents& base : copiesOf(last.block.base, *last.source, where)) {
            if (looks-- <= 0)
                return damagedContents(chain.front(), tr(L"it builds on too many others"));
            Expected<void> extended = extendBy(base, chain, looks);
            if (extended)
                return extended;
            failure = extended.error();
        }
    }
    if (failure)
        return *failure;
    // Another process may have put it elsewhere since.
    const Expected<std::optional<PackedContents>> found = find(last.block.base);
    if (!found)
        return found.error();
    if (*found)
        return extendBy(**found, chain, looks);
    return damagedContents(chain.front(), tr(L"one that it builds on is missing"));
}

// The contents themselves, those that they build on, and so on to such as stand alone.
Expected<std::vector<PackedContents>> Packs::chainOf(const PackedContents& contents) {
    // Whether that is possible is told by whoever misses something.
    if (!isListed_)
        static_cast<void>(list());
    std::vector<PackedContents> chain = {contents};
    int looks = mostLooks;
    if (Expected<void> extended = extend(chain, looks); !extended)
        return std::move(extended).error();
    return chain;
}

// That of another copy when this one leads nowhere.
Expected<std::vector<PackedContents>> Packs::chainOfAnyCopy(const PackedContents& contents) {
    Expected<std::vector<PackedContents>> chain = chainOf(contents);
    if (chain)
        return chain;
    for (const PackedContents& copy :
         copiesOf(contents.digest, *contents.source, Where::elsewhere)) {
        if (Expected<std::vector<PackedContents>> other = chainOf(copy))
            return other;
    }
    return chain;
}

}  // namespace qrv
