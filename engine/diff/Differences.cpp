#include <engine/base/SortedLookup.h>
#include <engine/diff/Differences.h>

#include <map>
#include <utility>

namespace qrv {

namespace {

/// Makes one of the two halves of each renamed file.
void join(const Renames& renames, std::vector<Difference>& files) {
    std::map<OdString, std::optional<TreeFile>> previous;
    for (const auto& [path, old] : renames)
        previous.emplace(old, std::nullopt);
    std::erase_if(files, [&previous](Difference& file) {
        const auto half = file.after ? previous.end() : previous.find(file.path);
        if (half == previous.end())
            return false;
        half->second = std::move(file.before);
        return true;
    });
    for (Difference& file : files) {
        const auto rename = renames.find(file.path);
        if (rename == renames.end())
            continue;
        file.previousPath = rename->second;
        file.before = std::move(previous.at(rename->second));
    }
}

}  // namespace

std::vector<Difference> differencesOf(std::vector<TreeChange> changes) {
    std::vector<Difference> files;
    files.reserve(changes.size());
    for (TreeChange& change : changes)
        files.push_back(
            {std::move(change.path).text(), {}, std::move(change.before), std::move(change.after)});
    return files;
}

std::vector<Difference> withRenames(std::vector<Difference> files, const Renames& noted) {
    std::erase_if(files, [](const Difference& file) { return !file.hasOtherContents(); });
    const auto digestOf = [&files](std::optional<TreeFile> Difference::*side) {
        return [&files, side](const OdString& path) {
            const Difference* const file =
                findSorted(files, [&path](const Difference& each) { return each.path <=> path; });
            return (file->*side)->digest();
        };
    };
    RenameHalves removed = {{}, digestOf(&Difference::before)};
    RenameHalves added = {{}, digestOf(&Difference::after)};
    for (const Difference& file : files) {
        if (!file.after)
            removed.files.push_back({file.path, file.before->sizeBytes});
        else if (!file.before)
            added.files.push_back({file.path, file.after->sizeBytes});
    }
    join(findRenames(removed, added, noted), files);
    return files;
}

}  // namespace qrv
