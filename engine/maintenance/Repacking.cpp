#include <engine/base/Translation.h>
#include <engine/maintenance/BaseSearch.h>
#include <engine/maintenance/ItemReader.h>
#include <engine/maintenance/PackCheck.h>
#include <engine/maintenance/Repacking.h>
#include <engine/paths/Layout.h>
#include <engine/storage/PackWriter.h>
#include <engine/storage/ReadToEnd.h>
#include <engine/storage/Sketch.h>
#include <engine/storage/StorageMessages.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

namespace qrv {

namespace {

class Repacking {
public:
    Repacking(Repository& repository, const Holdings& holdings, const PackingPlan& plan,
              std::vector<OdString>& problems)
        : repository_(repository),
          holdings_(holdings),
          plan_(plan),
          problems_(problems),
          reader_(repository, holdings, plan, problems),
          bases_(holdings, plan, reader_) {
        result_.isFree.resize(holdings.holders.size());
        result_.isPacked.resize(plan.items.size());
    }

    Repacked run() {
        const std::unique_ptr<Work> progress =
            repository_.caller().beginWork(tr(L"Packing"), plan_.order.size());
        for (const std::uint32_t number : plan_.order) {
            if (!writeNamed(number))
                return std::move(result_);
            progress->add(plan_.items[number].sizeBytes);
        }
        if (!finishPack() || !writeWaiting())
            return std::move(result_);
        for (const std::string& name : names_)
            readBack(name);
        readKept();
        free();
        return std::move(result_);
    }

private:
    const PackItem& item(std::uint32_t number) const { return plan_.items[number]; }

    /// False when nothing more can be written. Contents that cannot be read are left out.
    bool writeNamed(std::uint32_t number) {
        if (item(number).sizeBytes > longestWithBase)
            return writeStreamed(number);
        const std::shared_ptr<const Bytes> contents = reader_.contentsOf(number);
        if (!contents)
            return true;
        const std::optional<Sketch> sketch = Sketching::of(contents->span());
        const std::optional<BaseSearch::Base> base = bases_.find(number, *contents, sketch);
        std::optional<DifferenceBase> against;
        if (base)
            against = {.digest = base->next.digest,
                       .contents = base->contents->span(),
                       .depth = base->next.depth,
                       .roundStart = base->next.roundStart};
        const DigestBytes& digest = item(number).digest;
        if (!check(writer().add(digest, contents->span(), against, sketch)))
            return false;
        const bool isDifference = base && writer().depthOf(digest) > 1;
        bases_.note(number, isDifference ? &*base : nullptr, sketch);
        return !writer().isFull() || finishPack();
    }

    bool writeStreamed(std::uint32_t number) {
        addStreamed(number, writer());
        return !writer().isFull() || finishPack();
    }

    void addStreamed(std::uint32_t number, PackWriter& writer) {
        reader_.read(number, [&](VersionReader& version) -> Expected<void> {
            const Expected<DigestBytes> added = writer.addStreamed(version, std::nullopt);
            return added ? Expected<void>() : added.error();
        });
    }

    PackWriter& writer() {
        if (!writer_)
            writer_.emplace(repository_.folder(), Effort::thorough);
        return *writer_;
    }

    bool finishPack() {
        if (!writer_)
            return true;
        const bool isDone = finish(*writer_);
        writer_.reset();
        return isDone;
    }

    bool finish(PackWriter& writer) {
        const Expected<std::string> name = writer.finish();
        if (!name) {
            problems_.push_back(name.error().message);
            return false;
        }
        if (!name->empty())
            names_.push_back(*name);
        return true;
    }

    bool check(const Expected<void>& written) {
        if (!written)
            problems_.push_back(
                cannotWrite(OdString(layout::packsFolder), written.error().message).message);
        return written.hasValue();
    }

    /// What nobody names goes into a pack of its own, which keeps the time of the newest, so that
    /// it is forgotten no later than without this.
    bool writeWaiting() {
        if (plan_.waiting.empty())
            return true;
        PackWriter waiting(repository_.folder());
        std::int64_t modifiedNs = 0;
        for (const std::uint32_t number : plan_.waiting) {
            addStreamed(number, waiting);
            for (std::uint32_t i = 0; i < item(number).holdingCount; ++i)
                modifiedNs =
                    std::max(modifiedNs,
                             holdings_.holders[holdings_.all[item(number).firstHolding + i].holder]
                                 .modifiedNs);
        }
        waiting.setModified(modifiedNs);
        return finish(waiting);
    }

    /// The names of packs that are to go: what is new must not need them.
    std::vector<std::string> leaving() const {
        std::vector<std::string> names;
        for (const Holder& holder : holdings_.holders) {
            if (holder.kind == Holder::Kind::pack && holder.isTakenUp && !isReplaced(holder))
                names.push_back(holder.name);
        }
        return names;
    }

    void readBack(const std::string& name) {
        const Expected<std::shared_ptr<const PackReader>> pack =
            Packs(repository_.folder()).openPack(name);
        const Expected<PackContents> contents =
            pack ? qrv::contentsOf(**pack) : Expected<PackContents>(pack.error());
        if (!contents)
            return problems_.push_back(contents.error().message);
        std::vector<bool> isBad(contents->contents.size());
        for (const std::size_t i :
             unreadable(contents->contents, repository_.folder(), leaving())) {
            isBad[i] = true;
            problems_.push_back(
                damagedContents(contents->contents[i], tr(L"it cannot be read back")).message);
        }
        for (std::size_t i = 0; i < isBad.size(); ++i) {
            const std::uint32_t number = plan_.find(contents->contents[i].digest);
            if (isBad[i] || number == PackItem::none || result_.isPacked[number])
                continue;
            result_.isPacked[number] = true;
            if (!item(number).isNamed)
                continue;
            ++result_.packed.count;
            result_.packed.sizeBytes += item(number).sizeBytes;
        }
    }

    /// What lies in a pack that stays, and elsewhere as well, may go there when the pack has it
    /// whole.
    void readKept() {
        for (std::uint32_t number = 0; number < plan_.items.size(); ++number) {
            if (!item(number).isKept || item(number).holdingCount == 1)
                continue;
            for (std::uint32_t i = 0; i < item(number).holdingCount; ++i) {
                const Holding& holding = holdings_.all[item(number).firstHolding + i];
                if (holdings_.holders[holding.holder].isTakenUp)
                    continue;
                const Expected<void> whole = reader_.readFrom(
                    holding, [](VersionReader& version) { return readToEnd(version); });
                if (whole)
                    result_.isPacked[number] = true;
                else
                    problems_.push_back(whole.error().message);
            }
        }
    }

    /// A pack is named after its tables: a new one with the same contents took the old one's place.
    bool isReplaced(const Holder& holder) const {
        return holder.kind == Holder::Kind::pack &&
               std::find(names_.begin(), names_.end(), holder.name) != names_.end();
    }

    /// Only now is it known of each holder whether something in it is nowhere else.
    void free() {
        for (std::size_t i = 0; i < holdings_.holders.size(); ++i)
            result_.isFree[i] = holdings_.holders[i].isTakenUp && !isReplaced(holdings_.holders[i]);
        std::vector<bool> isDropped(plan_.items.size());
        for (const std::uint32_t number : plan_.dropped)
            isDropped[number] = true;
        for (std::uint32_t number = 0; number < plan_.items.size(); ++number) {
            if (result_.isPacked[number] || isDropped[number])
                continue;
            for (std::uint32_t i = 0; i < item(number).holdingCount; ++i)
                result_.isFree[holdings_.all[item(number).firstHolding + i].holder] = false;
        }
    }

    Repository& repository_;
    const Holdings& holdings_;
    const PackingPlan& plan_;
    std::vector<OdString>& problems_;
    ItemReader reader_;
    BaseSearch bases_;
    std::optional<PackWriter> writer_;
    std::vector<std::string> names_;
    Repacked result_;
};

}  // namespace

Repacked repack(Repository& repository, const Holdings& holdings, const PackingPlan& plan,
                std::vector<OdString>& problems) {
    return Repacking(repository, holdings, plan, problems).run();
}

}  // namespace qrv
