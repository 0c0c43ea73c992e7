#include <engine/base/Translation.h>
#include <engine/history/HistoryCheck.h>
#include <engine/history/HistoryRecords.h>
#include <engine/maintenance/Collection.h>
#include <engine/maintenance/NamedVersions.h>
#include <engine/maintenance/Packing.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/paths/Layout.h>
#include <engine/paths/PathParts.h>
#include <engine/repository/MetadataFiles.h>
#include <engine/storage/Age.h>
#include <engine/storage/PackFile.h>
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

constexpr std::chrono::hours unnamedAge{14 * 24};
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
        if (!named_.isEmpty())
            dropAllUnnamed(*files);
        pack(*files);
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
        std::int64_t sizeBytes = 0;
        for (const auto& list : {files.objects, files.stores, files.packs, files.leftovers}) {
            for (const MetadataFile& file : list)
                sizeBytes += file.sizeBytes;
        }
        const sys::Outcome<sys::FileStatus> pack = repository_.folder().status(layout::oldPackPath);
        return sizeBytes + (pack ? pack->sizeBytes : 0);
    }

    void findNeeded() {
        History& history = repository_.history();
        named_ = namedVersions(history, [](const OdString& error) { throw DatabaseError(error); });
        keepRecorded();
        for (const auto& [path, file] : repository_.headFiles())
            plain_.insert(file.contents);
        for (const common::Reference& reference : history.references()) {
            if (reference.type != common::RefType::Branch)
                continue;
            for (const auto& [path, file] : history.tree(reference.commitHash))
                plain_.insert(file.contents);
        }
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

    bool isNamed(const OdString& url) const { return named_.contains(url); }

    DrawingStorage& drawings() const { return repository_.storages().drawings(); }

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

    void dropAllUnnamed(const MetadataFiles& files) {
        for (const MetadataFile& object : files.objects) {
            const bool isNeeded =
                isNamed(objectUrl(object.name)) || !isOlder(object.modifiedNs, unnamedAge);
            if (!isNeeded && change([&] { return removeObject(object.name.toNarrow()); }))
                add(result_.droppedObjects, object.sizeBytes);
        }
        dropPacked();
        for (const MetadataFile& store : files.stores) {
            if (isOlder(store.modifiedNs, unnamedAge))
                dropVersions(store.name);
        }
    }

    void dropPacked() {
        const sys::Outcome<sys::FileStatus> status =
            repository_.folder().status(layout::oldPackPath);
        if (!status || !isOlder(status->modifiedNs, unnamedAge))
            return;
        std::optional<PackFile> pack = PackFile::open(repository_.folder(), repository_.root());
        if (!pack)
            return;
        std::vector<std::string> unnamed;
        std::int64_t sizeBytes = 0;
        for (const std::string& digest : pack->digests()) {
            if (isNamed(objectUrl(OdString::fromNarrow(digest))))
                continue;
            unnamed.push_back(digest);
            sizeBytes += pack->storedBytes(digest);
        }
        if (!unnamed.empty() && !change([&] { return pack->remove(unnamed); }))
            return;
        result_.droppedObjects.count += static_cast<std::int64_t>(unnamed.size());
        result_.droppedObjects.sizeBytes += sizeBytes;
    }

    void dropVersions(const OdString& store) {
        Expected<std::vector<OdString>> urls = drawings().revisionsIn(repository_.root(), store);
        if (!urls)
            return addProblem(urls.error().message);
        if (std::none_of(urls->begin(), urls->end(),
                         [this](const OdString& url) { return isNamed(url); }))
            return dropStore(store, *urls);
        // The newest first: nothing builds on it, so that nothing is written anew for its sake.
        std::reverse(urls->begin(), urls->end());
        for (const OdString& url : *urls) {
            if (!isNamed(url))
                dropVersion(url);
        }
    }

    void dropStore(const OdString& store, const std::vector<OdString>& urls) {
        std::vector<std::int64_t> sizes;
        sizes.reserve(urls.size());
        for (const OdString& url : urls)
            sizes.push_back(contentsSize(url));
        if (!change([&] { return drawings().removeStore(repository_.root(), store); }))
            return;
        for (const std::int64_t sizeBytes : sizes)
            add(result_.droppedDrawingVersions, sizeBytes);
    }

    void dropVersion(const OdString& url) {
        const std::int64_t sizeBytes = contentsSize(url);
        if (change([&] { return drawings().remove(repository_.root(), url); }))
            add(result_.droppedDrawingVersions, sizeBytes);
    }

    /// 0 for a version that is damaged.
    std::int64_t contentsSize(const OdString& url) const {
        const Expected<std::unique_ptr<VersionReader>> version =
            drawings().open(repository_.root(), url);
        return version && *version != nullptr ? (*version)->sizeBytes() : 0;
    }

    void pack(const MetadataFiles& files) {
        std::vector<PackCandidate> candidates = packCandidates(repository_, files.objects, plain_);
        if (mode_ == CollectionMode::change)
            candidates = packObjects(repository_, candidates, result_.problems);
        for (const PackCandidate& packed : candidates)
            add(result_.packed, packed.sizeBytes);
    }

    Repository& repository_;
    CollectionMode mode_;
    NamedVersions named_;
    /// URLs of what stays as it is.
    std::set<OdString> plain_;
    Collected result_;
};

}  // namespace

Expected<Collected> collectGarbage(Repository& repository, CollectionMode mode) {
    return Run(repository, mode).collect();
}

}  // namespace qrv
