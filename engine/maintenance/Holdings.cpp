#include <engine/maintenance/Holdings.h>
#include <engine/maintenance/PackCheck.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/paths/Layout.h>
#include <engine/storage/Age.h>
#include <engine/storage/PackFile.h>
#include <engine/storage/Packs.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <optional>
#include <utility>

namespace qrv {

namespace {

constexpr std::chrono::hours unnamedAge{14 * 24};
/// More packs of earlier collections are put together, unless they are large.
constexpr std::size_t mostSmallPacks = 8;
constexpr std::int64_t smallPackBytes = std::int64_t{256} << 20;

class Listing {
public:
    Listing(Repository& repository, const NamedVersions& named, std::vector<OdString>& problems)
        : repository_(repository), named_(named), problems_(problems) {}

    Holdings run(const MetadataFiles& files) {
        attempt([this] { addPacks(); });
        addObjects(files);
        attempt([this] { addOldPack(); });
        for (const MetadataFile& store : files.stores)
            attempt([&] { addStore(store); });
        order();
        choose();
        return std::move(holdings_);
    }

private:
    template <class Step>
    void attempt(const Step& step) {
        const std::size_t holderCount = holdings_.holders.size();
        const std::size_t count = holdings_.all.size();
        try {
            step();
        } catch (const DatabaseError& error) {
            problems_.push_back(error.description());
            holdings_.holders.resize(holderCount);
            holdings_.all.resize(count);
        }
    }

    std::uint32_t addHolder(Holder holder) {
        holdings_.holders.push_back(std::move(holder));
        return static_cast<std::uint32_t>(holdings_.holders.size() - 1);
    }

    void add(const DigestBytes& digest, std::int64_t sizeBytes, std::uint32_t holder) {
        holdings_.all.push_back({.digest = digest, .sizeBytes = sizeBytes, .holder = holder});
    }

    std::int64_t modifiedNs(const std::string& path) const {
        const sys::Outcome<sys::FileStatus> status = repository_.folder().status(path);
        // What cannot be asked for is not known to be old.
        return status ? status->modifiedNs : std::numeric_limits<std::int64_t>::max();
    }

    void addPacks() {
        const Packs packs(repository_.folder());
        const Expected<std::vector<std::string>> names = packs.names();
        if (!names)
            return problems_.push_back(names.error().message);
        for (const std::string& name : *names) {
            Expected<std::shared_ptr<const PackReader>> pack = packs.openPack(name);
            if (pack)
                addPack(name, std::move(*pack));
            else
                problems_.push_back(pack.error().message);
        }
    }

    void addPack(const std::string& name, std::shared_ptr<const PackReader> pack) {
        const Expected<PackContents> contents = contentsOf(*pack);
        if (!contents)
            return problems_.push_back(contents.error().message);
        const std::uint32_t holder = addHolder({.kind = Holder::Kind::pack,
                                                .name = name,
                                                .modifiedNs = modifiedNs(layout::packPath(name)),
                                                .pack = std::move(pack)});
        for (const PackedContents& each : contents->contents)
            add(each.digest, each.sizeBytes, holder);
    }

    void addObjects(const MetadataFiles& files) {
        const std::uint32_t holder = addHolder({.kind = Holder::Kind::objects});
        for (const MetadataFile& object : files.objects) {
            const DigestBytes digest = toDigestBytes(object.name.toNarrow());
            if (named_.ofDigest(digest).count > 0)
                add(digest, object.sizeBytes, holder);
        }
    }

    void addFrames(const std::vector<Frame>& frames, std::uint32_t holder) {
        for (const Frame& frame : frames)
            add(toDigestBytes(frame.digest), frame.sizeBytes, holder);
    }

    void addOldPack() {
        std::optional<PackFile> pack = PackFile::open(repository_.folder(), repository_.root());
        if (pack)
            addFrames(pack->frames(), addHolder({.kind = Holder::Kind::oldPack,
                                                 .modifiedNs = modifiedNs(layout::oldPackPath)}));
    }

    void addStore(const MetadataFile& file) {
        const Expected<std::unique_ptr<FrameStore>> store =
            repository_.storages().drawings().openStore(repository_.root(), file.name);
        if (!store)
            return problems_.push_back(store.error().message);
        if (*store != nullptr)
            addFrames((*store)->frames(), addHolder({.kind = Holder::Kind::store,
                                                     .name = file.name.toNarrow(),
                                                     .modifiedNs = file.modifiedNs}));
    }

    void order() {
        std::sort(holdings_.all.begin(), holdings_.all.end(),
                  [](const Holding& one, const Holding& other) {
                      return std::pair(one.digest, one.holder) <
                             std::pair(other.digest, other.holder);
                  });
    }

    /// What of its contents somebody needs, and what nobody does any more.
    struct Use {
        bool isNamed = false;
        bool hasForgotten = false;
    };

    std::vector<Use> uses() const {
        std::vector<Use> uses(holdings_.holders.size());
        for (const Holding& holding : holdings_.all) {
            Use& use = uses[holding.holder];
            if (named_.ofDigest(holding.digest).count > 0)
                use.isNamed = true;
            else if (isForgotten(holdings_.holders[holding.holder].modifiedNs))
                use.hasForgotten = true;
        }
        return uses;
    }

    void choose() {
        const std::vector<Use> found = uses();
        std::size_t smallPacks = 0;
        for (std::size_t i = 0; i < found.size(); ++i) {
            Holder& holder = holdings_.holders[i];
            const bool isArranged = holder.pack && holder.pack->isArranged();
            holder.isTakenUp = found[i].hasForgotten || (!isArranged && found[i].isNamed) ||
                               holder.kind == Holder::Kind::oldPack ||
                               holder.kind == Holder::Kind::store;
            smallPacks += isArranged && isSmall(holder) ? 1 : 0;
        }
        if (smallPacks > mostSmallPacks) {
            for (Holder& holder : holdings_.holders)
                holder.isTakenUp = holder.isTakenUp ||
                                   (holder.pack && holder.pack->isArranged() && isSmall(holder));
        }
        while (takeUpDependents()) {
        }
    }

    static bool isSmall(const Holder& holder) {
        return holder.pack->trailer().fileBytes() < smallPackBytes;
    }

    /// How many blocks it takes to read what stays must not change, so that what it builds on must
    /// stay as well. Whether there are more to be looked at.
    bool takeUpDependents() {
        bool isChanged = false;
        for (Holder& holder : holdings_.holders) {
            if (holder.pack && !holder.isTakenUp && buildsOnWhatMoves(*holder.pack)) {
                holder.isTakenUp = true;
                isChanged = true;
            }
        }
        return isChanged;
    }

    bool buildsOnWhatMoves(const PackReader& pack) const {
        const Expected<std::vector<std::optional<PackBlock>>> blocks = pack.blocks();
        return blocks && std::any_of(blocks->begin(), blocks->end(), [&](const auto& block) {
                   return block && block->kind == BlockKind::difference &&
                          !stays(block->base, block->depth - 1);
               });
    }

    /// Whether a pack that stays has the contents, and reading them there takes no more blocks.
    bool stays(const DigestBytes& digest, int mostBlocks) const {
        auto holding = std::lower_bound(
            holdings_.all.begin(), holdings_.all.end(), digest,
            [](const Holding& each, const DigestBytes& value) { return each.digest < value; });
        for (; holding != holdings_.all.end() && holding->digest == digest; ++holding) {
            const Holder& holder = holdings_.holders[holding->holder];
            if (!holder.pack || holder.isTakenUp)
                continue;
            const Expected<std::optional<PackedContents>> found = holder.pack->find(digest);
            if (found && *found && (**found).block.depth <= mostBlocks)
                return true;
        }
        return false;
    }

    Repository& repository_;
    const NamedVersions& named_;
    std::vector<OdString>& problems_;
    Holdings holdings_;
};

}  // namespace

bool isForgotten(std::int64_t modifiedNs) {
    return isOlder(modifiedNs, unnamedAge);
}

bool Holdings::isNeeded(const Holding& holding, const NamedVersions& named) const {
    return named.ofDigest(holding.digest).count > 0 ||
           !isForgotten(holders[holding.holder].modifiedNs);
}

Holdings holdingsOf(Repository& repository, const MetadataFiles& files, const NamedVersions& named,
                    std::vector<OdString>& problems) {
    return Listing(repository, named, problems).run(files);
}

}  // namespace qrv
