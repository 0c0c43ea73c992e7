#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/history/CommitName.h>
#include <engine/history/ReferenceName.h>
#include <engine/journal/Perform.h>
#include <engine/journal/Preconditions.h>
#include <engine/operations/MergeInternal.h>
#include <engine/operations/NamedReferencesInternal.h>
#include <engine/operations/Switch.h>
#include <engine/operations/WithRepositoryInternal.h>
#include <engine/repository/LogEntry.h>
#include <engine/tree/TreeStep.h>

namespace qrv {

namespace {

/// The commit of a branch that is there.
Expected<OdString> existingBranch(Repository& repository, const OdString& name) {
    if (const std::optional<OdString> commit =
            repository.history().reference(name, common::RefType::Branch))
        return *commit;
    if (name == repository.branch())
        return OdString();
    return withNearName(
        OdString::format(tr(L"There is no branch '%ls' (qrv switch --create makes one)"),
                         printable(name)),
        repository.history(), common::RefType::Branch, name);
}

/// The commit that a new branch begins with; empty before the first commit.
Expected<OdString> newBranch(Repository& repository, const SwitchRequest& request) {
    const OdString& name = request.branch;
    if (const Expected<OdString> valid = checkedReferenceName(name); !valid)
        return valid.error();
    if (repository.history().reference(name, common::RefType::Branch) ||
        name == repository.branch())
        return ErrorMessage{
            OdString::format(tr(L"There is a branch '%ls' already"), printable(name))};
    if (!request.start)
        return repository.headCommit();
    return findCommit(repository.history(), *request.start, repository.branch());
}

Expected<JournalEntry> entryOf(Repository& repository, const SwitchRequest& request) {
    JournalEntry entry;
    entry.branch = request.branch;
    entry.title = OdString::format(L"switch %ls", entry.branch);
    const Expected<OdString> commit =
        request.create ? newBranch(repository, request) : existingBranch(repository, entry.branch);
    if (!commit)
        return commit.error();
    entry.commit = *commit;
    if (entry.commit != repository.headCommit())
        entry.steps = stepsFromHead(repository.history(), entry.commit);
    return entry;
}

Expected<void> bringFiles(WorkingTree& workingTree, const JournalEntry& entry) {
    if (entry.steps.empty())
        return performWithoutFiles(workingTree, entry);
    const Expected<WorkingChanges> changes = findChangesOf(workingTree, pathsOf(entry.steps));
    if (!changes)
        return changes.error();
    if (Expected<void> unharmed = checkNoLocalChanges(workingTree, entry.steps, *changes);
        !unharmed)
        return unharmed;
    return perform(workingTree, entry, *changes);
}

}  // namespace

Expected<Switched> switchBranch(const std::string& folder, const SwitchRequest& request,
                                Caller& caller) {
    const auto action = [&](WorkingTree& workingTree) -> Expected<Switched> {
        if (const Expected<void> none = checkNoMerge(workingTree.repository()); !none)
            return none.error();
        const Expected<JournalEntry> entry = entryOf(workingTree.repository(), request);
        if (!entry)
            return entry.error();
        if (const Expected<void> done = bringFiles(workingTree, *entry); !done)
            return done.error();
        logEvent(L"switch " + quotedName(entry->branch), workingTree.root(), workingTree.folder(),
                 caller);
        return Switched{
            .branch = entry->branch, .commit = entry->commit, .fileCount = entry->steps.size()};
    };
    return withRepository(folder, Repository::Use::change, caller, action);
}

}  // namespace qrv
