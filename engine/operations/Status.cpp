#include <engine/base/SortedLookup.h>
#include <engine/operations/Status.h>
#include <engine/operations/WithRepositoryInternal.h>
#include <engine/worktree/Staging.h>

#include <algorithm>

namespace qrv {

namespace {

using common::StagedFile;

bool contains(const std::vector<StagedFile>& files, const OdString& path) {
    return findSorted(files, [&path](const StagedFile& file) { return file.path <=> path; }) !=
           nullptr;
}

bool isInConflict(const std::vector<common::ConflictData>& conflicts, const OdString& path) {
    return std::any_of(conflicts.begin(), conflicts.end(),
                       [&path](const auto& conflict) { return conflict.path == path; });
}

std::vector<StagedFile> unstagedChanges(const Status& status, const WorkingChanges& changes) {
    std::vector<StagedFile> files;
    for (const common::StatusRef& change : changes.files.changes) {
        const OdString path = change.path();
        if (!contains(status.staged, path) && !isInConflict(status.conflicts, path))
            files.emplace_back(path, change.status());
    }
    return files;
}

Status statusOf(Repository& repository, const WorkingChanges& changes) {
    Status status;
    status.root = repository.root().path();
    status.branch = repository.branch();
    const OdString head = repository.headCommit();
    if (!head.isEmpty())
        status.commit = repository.history().commit(head);
    status.merging = repository.history().note(mergeNote);
    status.fileCount = changes.presentCount();
    status.staged = stagedChanges(repository.state(), changes);
    status.conflicts = repository.state().conflicts;
    status.unstaged = unstagedChanges(status, changes);
    status.renames = changes.renames;
    status.unseen = changes.unseen;
    return status;
}

}  // namespace

Expected<Status> status(const std::string& folder, Caller& caller) {
    return withoutExceptions([&]() -> Expected<Status> {
        const Expected<std::unique_ptr<WorkingTree>> workingTree =
            openTree(folder, Repository::Use::look, caller, WorkingTree::Scan::ahead);
        if (!workingTree)
            return workingTree.error();
        const Expected<WorkingChanges> changes = findVisibleChanges(**workingTree);
        if (!changes)
            return changes.error();
        Status status = statusOf((*workingTree)->repository(), *changes);
        (*workingTree)->keepBaseline();
        // What was found by reading is only remembered to be quicker next time.
        if (const Expected<void> closed = (*workingTree)->close(); !closed)
            caller.note(closed.error().message);
        return status;
    });
}

}  // namespace qrv
