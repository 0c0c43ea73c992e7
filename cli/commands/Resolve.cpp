#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/text/ConflictText.h>
#include <common/state/Transaction.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/journal/Application.h>
#include <engine/journal/OpenTree.h>
#include <engine/journal/StepsToTree.h>
#include <engine/operations/MergeInternal.h>
#include <engine/worktree/PathArgument.h>
#include <engine/worktree/Staging.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qrv::cli {

namespace {

struct Arguments {
    std::string path;
    bool mine = false;
    bool theirs = false;
    bool merged = false;
    bool force = false;
    bool asJson = false;
};

Expected<common::ConflictData> findConflict(const WorkingTree& workingTree, const OdString& path) {
    for (const common::ConflictData& conflict :
         workingTree.repository().stateWithoutIndex().conflicts) {
        if (conflict.path == path)
            return conflict;
    }
    return ErrorMessage{OdString::format(tr(L"'%ls' has no conflict"), printable(path))};
}

/// What the file is to be: as in HEAD, or as on the other side.
Tree wantedTree(WorkingTree& workingTree, const common::ConflictData& conflict, bool theirs) {
    Tree tree;
    if (!theirs) {
        const auto file = workingTree.repository().headFiles().find(conflict.path);
        if (file != workingTree.repository().headFiles().end())
            tree.insert(*file);
    } else if (!conflict.remoteUrl.isEmpty()) {
        const Tree other = workingTree.repository().history().tree(
            workingTree.repository().history().note(mergeNote));
        const auto file = other.find(conflict.path);
        if (file != other.end())
            tree.insert(*file);
    }
    return tree;
}

Expected<void> bringVersion(WorkingTree& workingTree, const common::ConflictData& conflict,
                            const Arguments& arguments) {
    const Expected<WorkingChanges> changes = findChanges(workingTree);
    if (!changes)
        return changes.error();
    Plan plan;
    plan.title = OdString::format(L"resolve %ls", conflict.path);
    Expected<std::vector<PlannedFile>> steps =
        stepsToTree(workingTree, wantedTree(workingTree, conflict, arguments.theirs),
                    {conflict.path}, *changes, arguments.force ? Unsaved::store : Unsaved::refuse);
    if (!steps)
        return steps.error();
    plan.files = *steps;
    return plan.files.empty() ? Expected<void>() : carryOut(workingTree, plan, *changes);
}

Expected<void> settle(WorkingTree& workingTree, const OdString& path) {
    const Expected<WorkingChanges> changes = findChanges(workingTree);
    if (!changes)
        return changes.error();
    common::Transaction transaction = workingTree.repository().cache().getTransaction();
    std::erase_if(workingTree.repository().cache().write().conflicts,
                  [&path](const common::ConflictData& conflict) { return conflict.path == path; });
    const common::FileChange change = changeOf(path, *changes);
    if (change != common::FileChange::unchanged)
        stage({common::StagedFile(path, change)}, *changes, workingTree.repository().cache());
    transaction.commit();
    return {};
}

void print(const WorkingTree& workingTree, const OdString& path, bool asJson, Output& output) {
    const std::vector<common::ConflictData>& open =
        workingTree.repository().stateWithoutIndex().conflicts;
    if (asJson)
        return writeJson(toJson(open), output);
    output.write(
        OdString::format(tr(L"Resolved '%ls'; conflicts left: %i\n"), printable(path), open.size())
            .toNarrow());
}

Expected<void> run(const Arguments& arguments, Output& output) {
    const Expected<std::unique_ptr<WorkingTree>> workingTree =
        openTree(".", Repository::Use::change, person());
    if (!workingTree)
        return workingTree.error();
    const Expected<OdString> path = pathInRepository((*workingTree)->root(), arguments.path);
    if (!path)
        return path.error();
    const Expected<common::ConflictData> conflict = findConflict(**workingTree, *path);
    if (!conflict)
        return conflict.error();
    if (!arguments.merged) {
        if (const Expected<void> brought = bringVersion(**workingTree, *conflict, arguments);
            !brought)
            return brought.error();
    }
    if (const Expected<void> settled = settle(**workingTree, *path); !settled)
        return settled.error();
    if (const Expected<void> saved = (*workingTree)->repository().saveState(); !saved)
        return saved.error();
    print(**workingTree, *path, arguments.asJson, output);
    return {};
}

}  // namespace

Action declareResolve(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser.addOption("PATH", arguments->path, trUtf8(L"The file with the conflict")).required();
    const Argument mine =
        parser.addFlag("--mine", arguments->mine, trUtf8(L"Take this branch's version"));
    const Argument theirs =
        parser.addFlag("--theirs", arguments->theirs, trUtf8(L"Take the other side's version"));
    const Argument merged =
        parser.addFlag("--merged", arguments->merged, trUtf8(L"Take the file as it lies here"));
    parser.requireOne({mine, theirs, merged}, "--mine, --theirs or --merged");
    parser.addFlag("--force", arguments->force, trUtf8(L"Also replace unsaved changes"));
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print the conflicts that are left"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
