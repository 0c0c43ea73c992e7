#include <common/state/Transaction.h>
#include <engine/paths/PathParts.h>
#include <engine/worktree/Staging.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <utility>

namespace qrv {

using common::FileChange;
using common::StagedFile;

namespace {

std::vector<StagedFile> toList(const std::map<OdString, FileChange>& changes) {
    std::vector<StagedFile> files;
    files.reserve(changes.size());
    for (const auto& [path, change] : changes)
        files.emplace_back(path, change);
    return files;
}

}  // namespace

std::vector<StagedFile> candidatesOf(const common::RepoFileExplorer& explorer) {
    std::vector<StagedFile> files;
    for (const common::StatusRef& status : explorer.possibleStageFiles())
        files.emplace_back(status.path(), status.status());
    return files;
}

std::vector<StagedFile> withRenameHalves(const std::vector<StagedFile>& files,
                                         const WorkingChanges& changes) {
    std::map<OdString, FileChange> chosen;
    for (const StagedFile& file : files)
        chosen.insert_or_assign(file.path, file.change);
    for (const auto& [path, previous] : changes.renames) {
        if (!chosen.contains(path) && !chosen.contains(previous))
            continue;
        chosen.insert_or_assign(path, FileChange::added);
        chosen.insert_or_assign(previous, FileChange::removed);
    }
    return toList(chosen);
}

void stage(const std::vector<StagedFile>& files, const WorkingChanges& changes,
           common::Cache& cache) {
    std::set<OdString> paths;
    for (const StagedFile& file : files)
        paths.insert(file.path);
    common::Transaction transaction = cache.getTransaction();
    common::State& state = cache.write();
    std::erase_if(state.stagedFiles,
                  [&paths](const StagedFile& file) { return paths.contains(file.path); });
    state.stagedFiles.insert(state.stagedFiles.end(), files.begin(), files.end());
    for (const OdString& path : paths) {
        const auto rename = changes.renames.find(path);
        if (rename == changes.renames.end())
            state.renames.erase(path);
        else
            state.renames.insert_or_assign(path, rename->second);
    }
    transaction.commit();
}

std::vector<StagedFile> unstage(const std::vector<OdString>& chosen, common::Cache& cache) {
    common::Transaction transaction = cache.getTransaction();
    common::State& state = cache.write();
    const auto taken = std::stable_partition(
        state.stagedFiles.begin(), state.stagedFiles.end(),
        [&chosen](const StagedFile& file) { return !isChosen(file.path, chosen); });
    std::vector<StagedFile> files(std::make_move_iterator(taken),
                                  std::make_move_iterator(state.stagedFiles.end()));
    state.stagedFiles.erase(taken, state.stagedFiles.end());
    for (const StagedFile& file : files)
        state.renames.erase(file.path);
    transaction.commit();
    return files;
}

std::vector<StagedFile> stagedChanges(const common::State& state, const WorkingChanges& changes) {
    std::map<OdString, FileChange> files;
    for (const StagedFile& file : state.stagedFiles) {
        const bool isHidden = isUnseen(file.path, changes.unseen);
        const FileChange change = isHidden ? file.change : changeOf(file.path, changes);
        if (change != FileChange::unchanged)
            files.insert_or_assign(file.path, change);
    }
    return toList(files);
}

}  // namespace qrv
