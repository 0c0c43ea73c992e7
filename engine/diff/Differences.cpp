#include <engine/diff/Differences.h>
#include <engine/tree/Difference.h>

#include <optional>
#include <set>

namespace qrv {

namespace {

std::optional<TreeFile> sideOf(const TreeFile* file) {
    return file == nullptr ? std::nullopt : std::optional(*file);
}

/// Makes one of the two halves of each renamed file.
void join(const Renames& renames, const Tree& before, std::vector<Difference>& differences) {
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
        difference.before = sideOf(fileIn(before, rename->second));
    }
}

template <class After>
std::vector<Difference> compare(const Tree& before, const After& after, const Renames& noted) {
    const auto digestsIn = [](const auto& files) {
        return [&files](const OdString& path) { return files.find(path)->second.digest(); };
    };
    RenameHalves removed = {{}, digestsIn(before)};
    RenameHalves added = {{}, digestsIn(after)};
    std::vector<Difference> differences;
    visitDifferences(before, after,
                     [&](const OdString& path, const TreeFile* old, const TreeFile* file) {
                         if (old != nullptr && file != nullptr) {
                             if (old->hasSameContents(*file))
                                 return;
                         } else if (old != nullptr) {
                             removed.files.push_back({path, old->sizeBytes});
                         } else if (file != nullptr) {
                             added.files.push_back({path, file->sizeBytes});
                         }
                         differences.push_back({path, {}, sideOf(old), sideOf(file)});
                     });
    join(findRenames(removed, added, noted), before, differences);
    return differences;
}

}  // namespace

std::vector<Difference> differencesBetween(const Tree& before, const Tree& after,
                                           const Renames& noted) {
    return compare(before, after, noted);
}

std::vector<Difference> differencesBetween(const Tree& before, const WorkingFiles& after,
                                           const Renames& noted) {
    return compare(before, after, noted);
}

}  // namespace qrv
