#include <engine/tree/Renames.h>

#include <cstdint>
#include <set>

namespace qrv {

namespace {

/// Files that went and have one size, and with which nothing was joined yet.
class Candidates {
public:
    void add(const OdString& path) { unread_.push_back(path); }

    bool isEmpty() const { return unread_.empty() && byDigest_.empty(); }

    /// Takes the first of them with the contents out; empty when there is none.
    OdString take(const OdString& digest, const RenameHalves& removed) {
        for (const OdString& path : unread_) {
            if (const OdString known = removed.digestOf(path); !known.isEmpty())
                byDigest_.emplace(known, path);
        }
        unread_.clear();
        const auto equal = byDigest_.lower_bound(digest);
        if (equal == byDigest_.end() || equal->first != digest)
            return {};
        OdString path = equal->second;
        byDigest_.erase(equal);
        return path;
    }

private:
    std::vector<OdString> unread_;
    std::multimap<OdString, OdString> byDigest_;
};

/// Of `noted` those whose two halves are there.
Renames possibleOf(const Renames& noted, const RenameHalves& removed, const RenameHalves& added) {
    std::set<OdString> left;
    for (const SizedFile& file : removed.files)
        left.insert(file.path);
    Renames possible;
    for (const SizedFile& file : added.files) {
        const auto rename = noted.find(file.path);
        if (rename != noted.end() && left.erase(rename->second) > 0)
            possible.insert(*rename);
    }
    return possible;
}

}  // namespace

Renames renamesOf(const std::vector<FileDelta>& deltas) {
    Renames renames;
    for (const FileDelta& delta : deltas) {
        if (delta.previousPath)
            renames.emplace(delta.path, *delta.previousPath);
    }
    return renames;
}

Renames findRenames(const RenameHalves& removed, const RenameHalves& added, const Renames& noted) {
    Renames renames = noted.empty() ? Renames() : possibleOf(noted, removed, added);
    std::set<OdString> joined;
    for (const auto& [path, previous] : renames)
        joined.insert(previous);
    std::map<std::int64_t, Candidates> bySize;
    for (const SizedFile& file : removed.files) {
        // All empty files are equal, which says nothing about where one came from.
        if (file.sizeBytes != 0 && !joined.contains(file.path))
            bySize[file.sizeBytes].add(file.path);
    }
    for (const SizedFile& file : added.files) {
        const auto candidates = bySize.find(file.sizeBytes);
        if (candidates == bySize.end() || candidates->second.isEmpty() ||
            renames.contains(file.path))
            continue;
        const OdString digest = added.digestOf(file.path);
        const OdString previous =
            digest.isEmpty() ? OdString() : candidates->second.take(digest, removed);
        if (!previous.isEmpty())
            renames.emplace(file.path, previous);
    }
    return renames;
}

}  // namespace qrv
