#include <engine/operations/StagingFactsInternal.h>
#include <engine/paths/PathParts.h>
#include <engine/paths/RelativePath.h>
#include <engine/worktree/FoldedName.h>
#include <engine/worktree/NamesAlike.h>
#include <engine/worktree/OpenDrawings.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace qrv {

namespace {

using common::FileChange;
using common::StagedFile;

/// All names of files and folders that are in the way of another one on some file system.
class NameTable {
public:
    explicit NameTable(const std::vector<OdString>& present) {
        for (const OdString& path : present) {
            for (OdString part = path; !part.isEmpty(); part = parentOf(part)) {
                // The folders above one that is known are known too.
                if (!names_.insert(part).second)
                    break;
                byFolded_[folded(part)].push_back(part);
            }
        }
    }

    /// Another name that could be taken for `path` or a folder above it.
    std::optional<OddName> clashOf(const OdString& path) const {
        for (OdString part = path; !part.isEmpty(); part = parentOf(part)) {
            const auto alike = byFolded_.find(folded(part));
            if (alike == byFolded_.end())
                continue;
            for (const OdString& other : alike->second) {
                // Names that differ in a folder above are told for that folder.
                if (other != part && parentOf(other) == parentOf(part))
                    return OddName{.path = part, .other = other};
            }
        }
        return std::nullopt;
    }

private:
    std::set<OdString> names_;
    std::map<std::u16string, std::vector<OdString>> byFolded_;
};

std::set<OdString> contentsOf(const std::vector<StagedFile>& files) {
    std::set<OdString> paths;
    for (const StagedFile& file : files) {
        if (file.change != FileChange::removed)
            paths.insert(file.path);
    }
    return paths;
}

void findSizes(Added& added, std::int64_t largeFileBytes, const WorkingTree& workingTree) {
    const std::set<OdString> chosen = contentsOf(added.staged);
    std::set<OdString> staged = contentsOf(workingTree.repository().state().stagedFiles);
    staged.insert(chosen.begin(), chosen.end());
    for (const OdString& path : staged) {
        const sys::Outcome<sys::FileStatus> status = workingTree.folder().status(path.toNarrow());
        const std::int64_t sizeBytes = status ? status->sizeBytes : 0;
        added.stagedBytes += sizeBytes;
        if (largeFileBytes > 0 && sizeBytes > largeFileBytes && chosen.contains(path))
            added.large.push_back({path, sizeBytes});
    }
}

/// Only of new names: a person who keeps an old one has been told.
void findNames(Added& added, const WorkingChanges& changes, const WorkingTree& workingTree) {
    std::optional<NameTable> table;
    if (haveNamesAlike(added.staged, workingTree))
        table.emplace(presentFiles(changes));
    std::set<std::pair<OdString, OdString>> told;
    for (const StagedFile& file : added.staged) {
        if (file.change != FileChange::added)
            continue;
        const std::optional<OddName> clash = table ? table->clashOf(file.path) : std::nullopt;
        if (clash && told.insert(std::minmax(clash->path, clash->other)).second)
            added.oddNames.push_back(*clash);
        if (!isPortable(file.path.toNarrow()))
            added.oddNames.push_back({file.path, {}});
    }
}

void findOpenDrawings(Added& added, const WorkingTree& workingTree) {
    for (const StagedFile& file : added.staged) {
        if (file.change == FileChange::removed)
            continue;
        if (const std::optional<OdString> lock = lockBeside(file.path, workingTree))
            added.open.push_back({file.path, *lock});
    }
}

}  // namespace

bool haveNamesAlike(const std::vector<StagedFile>& files, const WorkingTree& workingTree) {
    NamesAlike disk(workingTree.folder());
    return std::any_of(files.begin(), files.end(), [&disk](const StagedFile& file) {
        return file.change == FileChange::added && disk.hasOther(file.path);
    });
}

void findStagingFacts(Added& added, std::int64_t largeFileBytes, const WorkingChanges& changes,
                      const WorkingTree& workingTree) {
    findSizes(added, largeFileBytes, workingTree);
    findNames(added, changes, workingTree);
    findOpenDrawings(added, workingTree);
}

}  // namespace qrv
