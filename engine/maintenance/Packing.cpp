#include <engine/base/Translation.h>
#include <engine/maintenance/NamedVersions.h>
#include <engine/maintenance/Packing.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/storage/PackFile.h>
#include <engine/storage/ReadToEnd.h>
#include <engine/storage/StorageMessages.h>

#include <map>
#include <memory>
#include <span>
#include <utility>

namespace qrv {

namespace {

/// A transaction costs some flushes of the disk; what one holds is done again after a kill.
constexpr std::size_t mostOfBatch = 200;
constexpr std::int64_t mostBytesOfBatch = std::int64_t{64} << 20;

class Choice {
public:
    Choice(Repository& repository, const std::vector<MetadataFile>& objects,
           const std::set<OdString>& needed)
        : history_(repository.history()) {
        for (const MetadataFile& object : objects) {
            const OdString url = objectUrl(object.name);
            if (!needed.contains(url))
                waiting_.emplace(url, object.sizeBytes);
        }
        if (std::optional<PackFile> pack = PackFile::open(repository.folder(), repository.root())) {
            for (const std::string& digest : pack->digests())
                packed_.insert(objectUrl(OdString::fromNarrow(digest)));
        }
    }

    std::vector<PackCandidate> run() {
        for (const std::int64_t number : commitNumbers(history_)) {
            const std::optional<CommitEntry> commit = history_.commitByNumber(number);
            if (!commit)
                continue;
            for (const FileDelta& delta : history_.deltas(commit->hash))
                consider(delta);
        }
        return std::move(candidates_);
    }

private:
    void consider(const FileDelta& delta) {
        if (delta.url.isEmpty())
            return;
        if (delta.previousPath) {
            if (const auto renamed = latest_.find(*delta.previousPath); renamed != latest_.end())
                latest_.insert_or_assign(delta.path, renamed->second);
        }
        const auto waiting = waiting_.find(delta.url);
        if (waiting != waiting_.end()) {
            candidates_.push_back({.digest = digestOf(delta.url),
                                   .sizeBytes = waiting->second,
                                   .base = baseOf(delta.path)});
            packed_.insert(delta.url);
            waiting_.erase(waiting);
        }
        if (packed_.contains(delta.url))
            latest_.insert_or_assign(delta.path, delta.url);
    }

    std::optional<std::string> baseOf(const OdString& path) const {
        const auto base = latest_.find(path);
        return base == latest_.end() ? std::nullopt : std::optional(digestOf(base->second));
    }

    /// The history gives only such URLs as can be.
    static std::string digestOf(const OdString& url) {
        return CheckedUrl::check(url)->digest().toNarrow();
    }

    History& history_;
    /// The sizes of plain objects that may be packed.
    std::map<OdString, std::int64_t> waiting_;
    /// What is in the pack, or will be.
    std::set<OdString> packed_;
    /// The version of each file that was packed last.
    std::map<OdString, OdString> latest_;
    std::vector<PackCandidate> candidates_;
};

Expected<void> addToPack(Repository& repository, PackFile& pack, const PackCandidate& candidate) {
    const OdString url = objectUrl(OdString::fromNarrow(candidate.digest));
    const Expected<std::unique_ptr<VersionReader>> contents =
        repository.storages().objects().open(repository.root(), url);
    if (!contents)
        return contents.error();
    if (*contents == nullptr)
        return notKept(url);
    DatabaseTransaction transaction(pack.database());
    if (Expected<void> added = pack.add(candidate.digest, **contents, candidate.base); !added)
        return added;
    transaction.commit();
    return {};
}

Expected<void> replacePlainFile(Repository& repository, PackFile& pack,
                                const PackCandidate& candidate) {
    const Expected<std::unique_ptr<VersionReader>> packed = pack.read(candidate.digest);
    if (!packed)
        return packed.error();
    if (*packed == nullptr)
        return ErrorMessage{OdString::format(tr(L"The object %ls did not come into the pack"),
                                             OdString::fromNarrow(candidate.digest))};
    if (Expected<void> whole = readToEnd(**packed); !whole)
        return whole;
    return repository.storages().objects().removePlain(repository.root(), candidate.digest);
}

/// How many candidates make the next batch: one at least.
std::size_t batchSize(std::span<const PackCandidate> candidates) {
    std::size_t count = 0;
    std::int64_t sizeBytes = 0;
    while (count < candidates.size() && count < mostOfBatch && sizeBytes < mostBytesOfBatch)
        sizeBytes += candidates[count++].sizeBytes;
    return count;
}

}  // namespace

std::vector<PackCandidate> packCandidates(Repository& repository,
                                          const std::vector<MetadataFile>& objects,
                                          const std::set<OdString>& needed) {
    return Choice(repository, objects, needed).run();
}

std::vector<PackCandidate> packObjects(Repository& repository,
                                       const std::vector<PackCandidate>& candidates,
                                       std::vector<OdString>& problems) {
    std::vector<PackCandidate> replaced;
    if (candidates.empty())
        return replaced;
    PackFile pack = PackFile::openForChange(repository.folder(), repository.root());
    const std::unique_ptr<Work> progress =
        repository.caller().beginWork(tr(L"Packing"), candidates.size());
    std::span<const PackCandidate> rest = candidates;
    while (!rest.empty()) {
        const std::span<const PackCandidate> batch = rest.first(batchSize(rest));
        rest = rest.subspan(batch.size());
        std::vector<const PackCandidate*> added;
        DatabaseTransaction transaction(pack.database());
        for (const PackCandidate& candidate : batch) {
            if (const Expected<void> done = addToPack(repository, pack, candidate); done)
                added.push_back(&candidate);
            else
                problems.push_back(done.error().message);
            progress->add(candidate.sizeBytes);
        }
        transaction.commit();
        for (const PackCandidate* candidate : added) {
            if (const Expected<void> done = replacePlainFile(repository, pack, *candidate); done)
                replaced.push_back(*candidate);
            else
                problems.push_back(done.error().message);
        }
    }
    return replaced;
}

}  // namespace qrv
