#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/text/ConflictText.h>
#include <common/state/Transaction.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/worktree/Merging.h>
#include <engine/worktree/PathArgument.h>
#include <engine/worktree/PlanExecution.h>
#include <engine/worktree/Saving.h>
#include <engine/worktree/Staging.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/Workspace.h>

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

Expected<common::ConflictData> findConflict(const Workspace& workspace, const OdString& path) {
    for (const common::ConflictData& conflict : workspace.stateWithoutIndex().conflicts) {
        if (conflict.path == path)
            return conflict;
    }
    return ErrorMessage{OdString::format(tr(L"'%ls' has no conflict"), printable(path))};
}

/// What the file is to be: as in HEAD, or as on the other side.
Tree wantedTree(Workspace& workspace, const common::ConflictData& conflict, bool theirs) {
    Tree tree;
    if (!theirs) {
        const auto file = workspace.headFiles().find(conflict.path);
        if (file != workspace.headFiles().end())
            tree.insert(*file);
    } else if (!conflict.remoteUrl.isEmpty()) {
        const Tree other = workspace.history().tree(workspace.history().note(mergeNote));
        const auto file = other.find(conflict.path);
        if (file != other.end())
            tree.insert(*file);
    }
    return tree;
}

Expected<void> bringVersion(Workspace& workspace, const common::ConflictData& conflict,
                            const Arguments& arguments) {
    const Expected<WorkingChanges> changes = findChanges(workspace);
    if (!changes)
        return changes.error();
    Plan plan;
    plan.title = OdString::format(L"resolve %ls", conflict.path);
    Expected<std::vector<PlannedFile>> steps =
        stepsToTree(workspace, wantedTree(workspace, conflict, arguments.theirs), {conflict.path},
                    *changes, arguments.force ? Unsaved::store : Unsaved::refuse);
    if (!steps)
        return steps.error();
    plan.files = *steps;
    return plan.files.empty() ? Expected<void>() : carryOut(workspace, plan, *changes);
}

Expected<void> settle(Workspace& workspace, const OdString& path) {
    const Expected<WorkingChanges> changes = findChanges(workspace);
    if (!changes)
        return changes.error();
    common::Transaction transaction = workspace.cache().getTransaction();
    std::erase_if(workspace.cache().write().conflicts,
                  [&path](const common::ConflictData& conflict) { return conflict.path == path; });
    const common::FileChange change = changeOf(path, *changes);
    if (change != common::FileChange::unchanged)
        stage({common::StagedFile(path, change)}, *changes, workspace.cache());
    transaction.commit();
    return {};
}

void print(const Workspace& workspace, const OdString& path, bool asJson, Output& output) {
    const std::vector<common::ConflictData>& open = workspace.stateWithoutIndex().conflicts;
    if (asJson)
        return writeJson(toJson(open), output);
    output.write(
        OdString::format(tr(L"Resolved '%ls'; conflicts left: %i\n"), printable(path), open.size())
            .toNarrow());
}

Expected<void> run(const Arguments& arguments, Output& output) {
    const Expected<std::unique_ptr<Workspace>> workspace =
        Workspace::open(".", Workspace::Use::change, person());
    if (!workspace)
        return workspace.error();
    const Expected<OdString> path = pathInRepository((*workspace)->root(), arguments.path);
    if (!path)
        return path.error();
    const Expected<common::ConflictData> conflict = findConflict(**workspace, *path);
    if (!conflict)
        return conflict.error();
    if (!arguments.merged) {
        if (const Expected<void> brought = bringVersion(**workspace, *conflict, arguments);
            !brought)
            return brought.error();
    }
    if (const Expected<void> settled = settle(**workspace, *path); !settled)
        return settled.error();
    if (const Expected<void> saved = (*workspace)->saveState(); !saved)
        return saved.error();
    print(**workspace, *path, arguments.asJson, output);
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
