#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <engine/base/Printable.h>
#include <engine/base/Suggestion.h>
#include <engine/base/Translation.h>
#include <engine/history/CommitName.h>
#include <engine/history/ReferenceName.h>
#include <engine/journal/Application.h>
#include <engine/journal/OpenTree.h>
#include <engine/journal/Preconditions.h>
#include <engine/operations/MergeInternal.h>
#include <engine/repository/LogEntry.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace qrv::cli {

namespace {

struct Arguments {
    std::string branch;
    std::optional<std::string> start;
    bool creates = false;
    bool asJson = false;
};

/// The commit of a branch that is there.
Expected<OdString> existingBranch(WorkingTree& workingTree, const OdString& name) {
    if (const std::optional<OdString> commit =
            workingTree.repository().history().reference(name, common::RefType::Branch))
        return *commit;
    if (name == workingTree.repository().branch())
        return OdString();
    std::vector<OdString> branches;
    for (const common::Reference& reference : workingTree.repository().history().references()) {
        if (reference.type == common::RefType::Branch)
            branches.push_back(reference.name);
    }
    OdString text = OdString::format(
        tr(L"There is no branch '%ls' (qrv switch --create makes one)"), printable(name));
    if (const std::optional<OdString> meant = closest(name, branches))
        text += OdString::format(tr(L"; did you mean '%ls'?"), printable(*meant));
    return ErrorMessage{text};
}

/// The commit that a new branch begins with; empty before the first commit.
Expected<OdString> newBranch(WorkingTree& workingTree, const OdString& name,
                             const std::optional<std::string>& start) {
    if (const Expected<OdString> valid = checkedReferenceName(name); !valid)
        return valid.error();
    if (workingTree.repository().history().reference(name, common::RefType::Branch) ||
        name == workingTree.repository().branch())
        return ErrorMessage{
            OdString::format(tr(L"There is a branch '%ls' already"), printable(name))};
    if (!start)
        return workingTree.repository().headCommit();
    return findCommit(workingTree.repository().history(), OdString::fromNarrow(*start),
                      workingTree.repository().branch());
}

jsonlib::json::Value toJson(const Plan& plan) {
    jsonlib::json::Object object;
    object[L"branch"] = plan.branch.toWide();
    object[L"commit"] = plan.commit.toWide();
    object[L"files"] = static_cast<std::uint64_t>(plan.files.size());
    return object;
}

Expected<Plan> planOf(WorkingTree& workingTree, const Arguments& arguments) {
    Plan plan;
    plan.branch = OdString::fromNarrow(arguments.branch);
    plan.title = OdString::format(L"switch %ls", plan.branch);
    const Expected<OdString> commit = arguments.creates
                                          ? newBranch(workingTree, plan.branch, arguments.start)
                                          : existingBranch(workingTree, plan.branch);
    if (!commit)
        return commit.error();
    plan.commit = *commit;
    if (plan.commit == workingTree.repository().headCommit())
        return plan;
    plan.files = stepsBetween(workingTree.repository().headFiles(),
                              workingTree.repository().history().tree(plan.commit));
    return plan;
}

Expected<void> bringFiles(WorkingTree& workingTree, const Plan& plan) {
    if (plan.files.empty())
        return carryOutWithoutFiles(workingTree, plan);
    const Expected<WorkingChanges> changes = findChanges(workingTree);
    if (!changes)
        return changes.error();
    if (Expected<void> unharmed = checkUnharmed(workingTree, plan.files, *changes); !unharmed)
        return unharmed;
    return carryOut(workingTree, plan, *changes);
}

Expected<void> run(const Arguments& arguments, Output& output) {
    const Expected<std::unique_ptr<WorkingTree>> workingTree =
        openTree(".", Repository::Use::change, person());
    if (!workingTree)
        return workingTree.error();
    if (const Expected<void> none = checkNoMerge(**workingTree); !none)
        return none.error();
    const Expected<Plan> plan = planOf(**workingTree, arguments);
    if (!plan)
        return plan.error();
    if (const Expected<void> done = bringFiles(**workingTree, *plan); !done)
        return done.error();
    logEvent(L"switch " + quotedName(plan->branch), (*workingTree)->root(),
             (*workingTree)->folder(), person());
    if (arguments.asJson)
        writeJson(toJson(*plan), output);
    else
        output.write(OdString::format(tr(L"On branch '%ls'; files changed: %i\n"),
                                      printable(plan->branch), plan->files.size())
                         .toNarrow());
    return {};
}

}  // namespace

Action declareSwitch(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser.addOption("BRANCH", arguments->branch, trUtf8(L"The branch to work on")).required();
    const Argument start = parser.addOption(
        "COMMIT", arguments->start,
        trUtf8(L"Where a new branch begins (default: the current branch's commit)"));
    const Argument create =
        parser.addFlag("-c,--create", arguments->creates, trUtf8(L"Make the branch"));
    start.needs(create);
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print the result as JSON"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
