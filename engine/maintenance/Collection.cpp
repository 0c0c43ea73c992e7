#include <engine/base/Translation.h>
#include <engine/history/HistoryCheck.h>
#include <engine/history/HistoryRecords.h>
#include <engine/maintenance/Collection.h>
#include <engine/maintenance/Holdings.h>
#include <engine/maintenance/NamedVersions.h>
#include <engine/maintenance/PackingPlan.h>
#include <engine/maintenance/Repacking.h>
#include <engine/paths/Layout.h>
#include <engine/paths/PathParts.h>
#include <engine/repository/MetadataFiles.h>
#include <engine/storage/Age.h>
#include <engine/storage/StorageMessages.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <utility>

namespace qrv {

namespace {

constexpr std::chrono::hours leftoverAge{24};

void add(Amount& amount, std::int64_t sizeBytes) {
    ++amount.count;
    amount.sizeBytes += sizeBytes;
}

class Run {
public:
    Run(Repository& repository, CollectionMode mode) : repository_(repository), mode_(mode) {}

    Expected<Collected> collect() {
        if (!problemsOf(repository_.history()).empty())
            return ErrorMessage{
                tr(L"The history is damaged, so that nobody can say what is still "
                   L"needed; nothing was changed (qrv verify tells more)")};
        Expected<MetadataFiles> files = listMetadata(repository_.root(), repository_.folder());
        if (!files)
            return files.error();
        result_.sizeBefore = sizeOf(*files);
        findNeeded();
        removeLeftovers(*files);
        if (!named_.isEmpty()) {
            dropUnnamedObjects(*files);
            pack(*files);
        }
        if (mode_ == CollectionMode::change)
            files = listMetadata(repository_.root(), repository_.folder());
        if (!files)
            return files.error();
        result_.sizeAfter = sizeOf(*files);
        return std::move(result_);
    }

private:
    void addProblem(const OdString& problem) { result_.problems.push_back(problem); }

    std::int64_t sizeOf(const MetadataFiles& files) const {
        std::int64_t sizeBytes = fileBytes(layout::oldPackPath);
        for (const auto& list : {files.objects, files.stores, files.packs, files.leftovers}) {
            for (const MetadataFile& file : list)
                sizeBytes += file.sizeBytes;
        }
        return sizeBytes;
    }

    std::int64_t fileBytes(const std::string& path) const {
        const sys::Outcome<sys::FileStatus> status = repository_.folder().status(path);
        return status ? status->sizeBytes : 0;
    }

    void findNeeded() {
        History& history = repository_.history();
        named_ = namedVersions(history, [](const OdString& error) { throw DatabaseError(error); });
        keepRecorded();
    }

    /// What the history has lost and the records have not may be wanted back.
    void keepRecorded() {
        const Expected<std::set<OdString>> hashes = recordedCommits(repository_.folder());
        if (!hashes)
            throw DatabaseError(hashes.error().message);
        for (const OdString& hash : *hashes) {
            if (repository_.history().commit(hash))
                continue;
            const Expected<NewCommit> commit = recordedCommit(hash, repository_.folder());
            for (const FileDelta& delta : commit ? commit->deltas : std::vector<FileDelta>())
                named_.add(delta.url);
        }
        named_.order();
    }

    /// Makes one change, unless this is only a look. A failure is told; then nothing has changed.
    template <class Change>
    bool change(Change make) {
        if (mode_ == CollectionMode::look)
            return true;
        const Expected<void> made = make();
        if (!made)
            addProblem(made.error().message);
        return made.hasValue();
    }

    Expected<void> removeFile(const std::string& path) const {
        if (const std::error_code error = repository_.folder().removeFile(path))
            return cannotRemove(path, error);
        return {};
    }

    Expected<void> removeObject(const std::string& digest) const {
        return repository_.storages().objects().removePlain(repository_.root(), digest);
    }

    /// Working files are written beside their names as well.
    std::vector<MetadataFile> allLeftovers(const MetadataFiles& files) const {
        std::set<OdString> folders = {OdString(L".")};
        for (const auto& [path, file] : repository_.headFiles())
            folders.insert(folderOf(path));
        std::vector<MetadataFile> all = files.leftovers;
        for (const OdString& folder : folders) {
            if (folder == OdString(layout::propertiesFolder))
                continue;
            for (const MetadataFile& file :
                 leftoversIn(repository_.root(), repository_.folder(), folder))
                all.push_back(file);
        }
        return all;
    }

    void removeLeftovers(const MetadataFiles& files) {
        for (const MetadataFile& file : allLeftovers(files)) {
            if (isOlder(file.modifiedNs, leftoverAge) &&
                change([&] { return removeFile(file.name.toNarrow()); }))
                add(result_.leftovers, file.sizeBytes);
        }
    }

    /// Plain objects have a time of their own.
    void dropUnnamedObjects(const MetadataFiles& files) {
        for (const MetadataFile& object : files.objects) {
            const bool isNeeded =
                named_.ofDigest(toDigestBytes(object.name.toNarrow())).count > 0 ||
                !isForgotten(object.modifiedNs);
            if (!isNeeded && change([&] { return removeObject(object.name.toNarrow()); }))
                add(result_.droppedObjects, object.sizeBytes);
        }
    }

    void pack(const MetadataFiles& files) {
        const Holdings holdings = holdingsOf(repository_, files, named_, result_.problems);
        const PackingPlan plan = planPacking(holdings, named_, repository_.history());
        if (mode_ == CollectionMode::look) {
            for (const std::uint32_t number : plan.order)
                add(result_.packed, plan.items[number].sizeBytes);
            return countDropped(holdings, plan, nullptr);
        }
        const Repacked repacked = repack(repository_, holdings, plan, result_.problems);
        result_.packed = repacked.packed;
        countDropped(holdings, plan, &repacked);
        removePacked(holdings, plan, repacked);
    }

    /// Only a look (without `repacked`) takes for done what is to be done.
    void countDropped(const Holdings& holdings, const PackingPlan& plan, const Repacked* repacked) {
        for (const std::uint32_t number : plan.dropped) {
            const std::uint32_t holder = holdings.all[plan.items[number].firstHolding].holder;
            const bool isStore = holdings.holders[holder].kind == Holder::Kind::store;
            if (repacked == nullptr || repacked->isFree[holder])
                add(isStore ? result_.droppedDrawingVersions : result_.droppedObjects,
                    plan.items[number].sizeBytes);
        }
    }

    void removePacked(const Holdings& holdings, const PackingPlan& plan, const Repacked& repacked) {
        for (std::uint32_t number = 0; number < plan.items.size(); ++number) {
            const PackItem& item = plan.items[number];
            for (std::uint32_t i = 0; repacked.isPacked[number] && i < item.holdingCount; ++i) {
                const Holder& holder = holdings.holders[holdings.all[item.firstHolding + i].holder];
                if (holder.kind == Holder::Kind::objects)
                    change([&] { return removeObject(toDigits(item.digest)); });
            }
        }
        for (std::size_t i = 0; i < holdings.holders.size(); ++i) {
            if (repacked.isFree[i])
                change([&] { return remove(holdings.holders[i]); });
        }
    }

    Expected<void> remove(const Holder& holder) const {
        switch (holder.kind) {
            case Holder::Kind::pack:
                return removeFile(layout::packPath(holder.name));
            case Holder::Kind::oldPack:
                return removeFile(layout::oldPackPath);
            case Holder::Kind::store:
                return repository_.storages().drawings().removeStore(
                    repository_.root(), OdString::fromNarrow(holder.name));
            case Holder::Kind::objects:
                break;
        }
        return {};
    }

    Repository& repository_;
    CollectionMode mode_;
    NamedVersions named_;
    Collected result_;
};

}  // namespace

Expected<Collected> collectGarbage(Repository& repository, CollectionMode mode) {
    return Run(repository, mode).collect();
}

}  // namespace qrv
