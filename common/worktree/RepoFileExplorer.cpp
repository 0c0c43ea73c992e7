#include <common/base/MessageInternal.h>
#include <common/worktree/RepoFileExplorer.h>
#include <common/worktree/ShortNameInternal.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <optional>
#include <set>
#include <tuple>
#include <utility>

namespace common {

namespace {

void append(std::vector<StagedFile>& candidates, const std::vector<File>& files,
            FileChange change) {
    for (const File& file : files)
        candidates.emplace_back(file.path, change);
}

std::vector<StagedFile> candidatesOf(const RepoChanges& changes) {
    std::vector<StagedFile> candidates;
    append(candidates, changes.modified, FileChange::modified);
    append(candidates, changes.added, FileChange::added);
    append(candidates, changes.removed, FileChange::removed);
    return candidates;
}

}  // namespace

struct RepoFileExplorer::Implementation {
    std::vector<StatusRef> changes;
    std::vector<StagedFile> candidates;
    // Indices of candidates.
    std::set<std::size_t> staged;
    std::vector<UnchangedFile> unchanged;
    RootPath root;
    // Indices of candidates, ordered by these, for whoever stages thousands; made when the first
    // is staged.
    std::vector<std::size_t> byPathAndChange;

    void orderCandidates() {
        byPathAndChange.resize(candidates.size());
        std::iota(byPathAndChange.begin(), byPathAndChange.end(), std::size_t{0});
        std::sort(byPathAndChange.begin(), byPathAndChange.end(),
                  [this](std::size_t one, std::size_t other) {
                      const auto& first = candidates[one];
                      const auto& second = candidates[other];
                      return std::tie(first.path, first.change, one) <
                             std::tie(second.path, second.change, other);
                  });
    }
};

RepoFileExplorer::RepoFileExplorer(const RepoChanges& changes, const RootPath& root)
    : implementation_(new Implementation{
          changes.changes, candidatesOf(changes), {}, changes.unchanged, root, {}}) {
}

RepoFileExplorer::RepoFileExplorer(RepoFileExplorer&& other) noexcept = default;
RepoFileExplorer& RepoFileExplorer::operator=(RepoFileExplorer&& other) noexcept = default;
RepoFileExplorer::~RepoFileExplorer() = default;

std::vector<StatusRef> RepoFileExplorer::possibleStageFiles() const {
    std::vector<StatusRef> files;
    for (const StagedFile& candidate : implementation_->candidates)
        files.emplace_back(candidate.path, candidate.change);
    return files;
}

bool RepoFileExplorer::hasFilesToStage() const {
    return implementation_->staged.size() < implementation_->candidates.size();
}

std::variant<StagedFile, NotFound, ErrorMessage> RepoFileExplorer::findForStaging(
    const OdString& name) const {
    const ShortName shortName(name);
    std::optional<StagedFile> found;
    for (const StagedFile& candidate : implementation_->candidates) {
        if (!shortName.matches(candidate.path))
            continue;
        if (found)
            return translatedError(L"More than one file found with the name %ls.\n", name);
        found = candidate;
    }
    if (!found)
        return NotFound();
    return *found;
}

OdString RepoFileExplorer::findUnchanged(const OdString& name) const {
    const ShortName shortName(name);
    for (const UnchangedFile& file : implementation_->unchanged) {
        if (shortName.matches(file.path))
            return file.path;
    }
    return {};
}

bool RepoFileExplorer::stage(const StagedFile& file) {
    const std::vector<StagedFile>& candidates = implementation_->candidates;
    std::vector<std::size_t>& ordered = implementation_->byPathAndChange;
    if (ordered.empty())
        implementation_->orderCandidates();
    // Of equal candidates the first.
    const auto index = std::lower_bound(ordered.begin(), ordered.end(), file,
                                        [&](std::size_t place, const StagedFile& sought) {
                                            const StagedFile& candidate = candidates[place];
                                            return std::tie(candidate.path, candidate.change) <
                                                   std::tie(sought.path, sought.change);
                                        });
    if (index == ordered.end() || !(candidates[*index] == file))
        return false;
    return implementation_->staged.insert(*index).second;
}

Expected<std::vector<StatusRef>> RepoFileExplorer::stagedFiles() const {
    if (!implementation_->staged.empty()) {
        std::vector<StatusRef> files = possibleStageFiles();
        // A new entry is selected already, so this marks nothing new: the list is every candidate,
        // on purpose, not only the staged ones.
        for (const std::size_t index : implementation_->staged)
            files[index].selected = true;
        return files;
    }
    if (implementation_->changes.empty())
        return translatedError(L"There are no modified or untracked files for commit.");
    return std::vector<StatusRef>();
}

}  // namespace common
