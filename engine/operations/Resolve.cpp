#include <common/state/Transaction.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/journal/Perform.h>
#include <engine/journal/StepsToTree.h>
#include <engine/operations/Resolve.h>
#include <engine/operations/WithRepositoryInternal.h>
#include <engine/worktree/PathArgument.h>
#include <engine/worktree/Staging.h>

namespace qrv {

namespace {

using common::ConflictData;

Expected<ConflictData> findConflict(const Repository& repository, const OdString& path) {
    for (const ConflictData& conflict : repository.state().conflicts) {
        if (conflict.path == path)
            return conflict;
    }
    return ErrorMessage{OdString::format(tr(L"'%ls' has no conflict"), printable(path))};
}

/// What the file is to be: as in HEAD, or as on the other side.
Tree wantedTree(Repository& repository, const ConflictData& conflict,
                ResolveRequest::Version version) {
    const bool isTheirs = version == ResolveRequest::Version::theirs;
    if (isTheirs && conflict.remoteUrl.isEmpty())
        return {};
    History& history = repository.history();
    const std::optional<TreeFile> file =
        history.fileAt(history.note(isTheirs ? mergeNote : headNote), conflict.path);
    Tree tree;
    if (const Expected<RelativePath> path = RelativePath::check(conflict.path); file && path)
        tree.emplace(*path, *file);
    return tree;
}

Expected<void> bringVersion(WorkingTree& workingTree, const ConflictData& conflict,
                            const ResolveRequest& request) {
    const Expected<WorkingChanges> changes = findChangesOf(workingTree, {conflict.path});
    if (!changes)
        return changes.error();
    Expected<std::vector<TreeStep>> steps =
        stepsToTree(workingTree, wantedTree(workingTree.repository(), conflict, request.version),
                    {conflict.path}, *changes, request.force ? Unsaved::store : Unsaved::refuse);
    if (!steps)
        return steps.error();
    if (steps->empty())
        return {};
    JournalEntry entry;
    entry.title = OdString::format(L"resolve %ls", conflict.path);
    entry.steps = std::move(*steps);
    return perform(workingTree, entry, *changes);
}

/// Of the file alone; but a new one may have had another name, which only a look at all files
/// tells.
Expected<WorkingChanges> changesFor(const OdString& path, WorkingTree& workingTree) {
    Expected<WorkingChanges> changes = findChangesOf(workingTree, {path});
    if (!changes || changeOf(path, *changes) != common::FileChange::added)
        return changes;
    return findChanges(workingTree);
}

Expected<void> settle(WorkingTree& workingTree, const OdString& path) {
    const Expected<WorkingChanges> changes = changesFor(path, workingTree);
    if (!changes)
        return changes.error();
    common::Cache& cache = workingTree.repository().cache();
    common::Transaction transaction = cache.getTransaction();
    std::erase_if(cache.write().conflicts,
                  [&path](const ConflictData& conflict) { return conflict.path == path; });
    const common::FileChange change = changeOf(path, *changes);
    if (change != common::FileChange::unchanged)
        stage({common::StagedFile(path, change)}, *changes, cache);
    transaction.commit();
    return {};
}

Expected<Resolved> resolve(WorkingTree& workingTree, const ResolveRequest& request) {
    const Expected<OdString> path = pathInRepository(workingTree.root(), request.path);
    if (!path)
        return path.error();
    const Expected<ConflictData> conflict = findConflict(workingTree.repository(), *path);
    if (!conflict)
        return conflict.error();
    if (request.version != ResolveRequest::Version::merged) {
        if (const Expected<void> brought = bringVersion(workingTree, *conflict, request); !brought)
            return brought.error();
    }
    if (const Expected<void> settled = settle(workingTree, *path); !settled)
        return settled.error();
    return Resolved{.path = *path, .conflicts = workingTree.repository().state().conflicts};
}

}  // namespace

Expected<Resolved> resolve(const std::string& folder, const ResolveRequest& request,
                           Caller& caller) {
    return withRepository(
        folder, Repository::Use::change, caller,
        [&request](WorkingTree& workingTree) { return resolve(workingTree, request); });
}

}  // namespace qrv
