#include <engine/diff/Differences.h>

#include <algorithm>
#include <utility>

namespace qrv {

namespace {

bool isSame(const FileVersion& one, const FileVersion& other) {
    if (!one.url.isEmpty() && one.url == other.url)
        return true;
    return one.sizeBytes == other.sizeBytes && digestOf(one) == digestOf(other);
}

/// Without regard to renames, ordered by path.
std::vector<Difference> differencesByPath(const Snapshot& before, const Snapshot& after) {
    std::vector<Difference> differences;
    auto old = before.begin();
    for (const auto& [path, version] : after) {
        for (; old != before.end() && old->first < path; ++old)
            differences.push_back({old->first, {}, old->second, std::nullopt});
        if (old == before.end() || old->first != path) {
            differences.push_back({path, {}, std::nullopt, version});
            continue;
        }
        if (!isSame(old->second, version))
            differences.push_back({path, {}, old->second, version});
        ++old;
    }
    for (; old != before.end(); ++old)
        differences.push_back({old->first, {}, old->second, std::nullopt});
    return differences;
}

bool isAdded(const Difference& difference) {
    return !difference.before && difference.after;
}

/// Joins the two halves of renamed files.
class RenameSearch {
public:
    explicit RenameSearch(std::vector<Difference>& differences) : differences_(differences) {
        for (Difference& difference : differences_) {
            if (!difference.after)
                removed_.emplace(difference.path, &difference);
        }
    }

    void joinNoted(const Renames& noted) {
        for (Difference& difference : differences_) {
            const auto rename = noted.find(difference.path);
            if (!isAdded(difference) || rename == noted.end())
                continue;
            if (const auto half = removed_.find(rename->second); half != removed_.end())
                join(difference, half);
        }
    }

    void joinEqual() {
        std::multimap<OdString, OdString> pathsByDigest;
        for (const auto& [path, difference] : removed_) {
            // All empty files are equal, which says nothing about where one came from.
            if (difference->before->sizeBytes != 0)
                pathsByDigest.emplace(digestOf(*difference->before), path);
        }
        if (pathsByDigest.empty())
            return;
        for (Difference& difference : differences_) {
            if (!isAdded(difference))
                continue;
            const auto equal = pathsByDigest.find(digestOf(*difference.after));
            if (equal == pathsByDigest.end())
                continue;
            join(difference, removed_.find(equal->second));
            pathsByDigest.erase(equal);
        }
    }

    void dropJoined() {
        std::erase_if(differences_, [](const Difference& difference) {
            return !difference.before && !difference.after;
        });
    }

private:
    using Removed = std::map<OdString, Difference*>;

    void join(Difference& added, Removed::iterator half) {
        added.previousPath = half->first;
        added.before = std::exchange(half->second->before, std::nullopt);
        removed_.erase(half);
    }

    std::vector<Difference>& differences_;
    Removed removed_;
};

}  // namespace

bool Difference::hasOtherContents() const {
    return !before || !after || !isSame(*before, *after);
}

Renames renamesOf(const std::vector<FileDelta>& deltas) {
    Renames renames;
    for (const FileDelta& delta : deltas) {
        if (!delta.previousPath.isEmpty())
            renames.emplace(delta.path, delta.previousPath);
    }
    return renames;
}

std::vector<Difference> differencesBetween(const Snapshot& before, const Snapshot& after,
                                           const Renames& noted) {
    std::vector<Difference> differences = differencesByPath(before, after);
    RenameSearch search(differences);
    search.joinNoted(noted);
    search.joinEqual();
    search.dropJoined();
    return differences;
}

}  // namespace qrv
