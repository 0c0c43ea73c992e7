#include <engine/diff/Differences.h>

#include <set>

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

Renames renamesBetween(const std::vector<Difference>& differences, const Snapshot& before,
                       const Snapshot& after, const Renames& noted) {
    const auto digestsIn = [](const Snapshot& snapshot) {
        return [&snapshot](const OdString& path) { return digestOf(snapshot.at(path)); };
    };
    RenameHalves removed = {{}, digestsIn(before)};
    RenameHalves added = {{}, digestsIn(after)};
    for (const Difference& difference : differences) {
        if (!difference.after)
            removed.files.push_back({difference.path, difference.before->sizeBytes});
        if (!difference.before)
            added.files.push_back({difference.path, difference.after->sizeBytes});
    }
    return findRenames(removed, added, noted);
}

/// Makes one of the two halves of each renamed file.
void join(const Renames& renames, const Snapshot& before, std::vector<Difference>& differences) {
    std::set<OdString> previous;
    for (const auto& [path, old] : renames)
        previous.insert(old);
    std::erase_if(differences, [&previous](const Difference& difference) {
        return !difference.after && previous.contains(difference.path);
    });
    for (Difference& difference : differences) {
        const auto rename = renames.find(difference.path);
        if (rename == renames.end())
            continue;
        difference.previousPath = rename->second;
        difference.before = before.at(rename->second);
    }
}

}  // namespace

bool Difference::hasOtherContents() const {
    return !before || !after || !isSame(*before, *after);
}

std::vector<Difference> differencesBetween(const Snapshot& before, const Snapshot& after,
                                           const Renames& noted) {
    std::vector<Difference> differences = differencesByPath(before, after);
    join(renamesBetween(differences, before, after, noted), before, differences);
    return differences;
}

}  // namespace qrv
