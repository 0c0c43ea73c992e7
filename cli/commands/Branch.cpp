#include <cli/commands/Commands.h>
#include <cli/commands/ReferenceList.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/text/CommitText.h>
#include <engine/base/Printable.h>
#include <engine/base/Suggestion.h>
#include <engine/base/Translation.h>
#include <engine/history/CommitName.h>
#include <engine/history/ReferenceName.h>
#include <engine/repository/LogEntry.h>
#include <engine/worktree/Workspace.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace qrv::cli {

namespace {

using common::RefType;

struct Arguments {
    std::optional<std::string> name;
    std::string start = "HEAD";
    std::optional<std::string> deleted;
    bool force = false;
    bool namesOnly = false;
    bool asJson = false;
};

struct Branch {
    OdString name;
    /// Nothing for the current branch before its first commit.
    std::optional<CommitEntry> commit;
};

std::vector<Branch> branchesOf(Workspace& workspace) {
    std::vector<OdString> names = namesOf(workspace.history(), RefType::Branch);
    const auto place = std::lower_bound(names.begin(), names.end(), workspace.branch());
    if (place == names.end() || *place != workspace.branch())
        names.insert(place, workspace.branch());
    std::vector<Branch> branches;
    for (const OdString& name : names) {
        Branch branch = {name, std::nullopt};
        if (const auto hash = workspace.history().reference(name, RefType::Branch))
            branch.commit = workspace.history().commit(*hash);
        branches.push_back(std::move(branch));
    }
    return branches;
}

void writeBranches(Workspace& workspace, Output& output) {
    const std::vector<Branch> branches = branchesOf(workspace);
    int width = 0;
    for (const Branch& branch : branches)
        width = std::max(width, printable(branch.name).getLength());
    for (const Branch& branch : branches) {
        const OdString mark = branch.name == workspace.branch() ? L"* " : L"  ";
        const OdString line =
            branch.commit
                ? mark + referenceLine(branch.name, width, *branch.commit)
                : OdString::format(tr(L"* %ls  (no commit yet)\n"), printable(branch.name));
        output.write(line.toNarrow());
    }
}

void writeDocument(Workspace& workspace, Output& output) {
    jsonlib::json::Array array;
    for (const Branch& branch : branchesOf(workspace)) {
        jsonlib::json::Object object = referenceDocument(branch.name, branch.commit);
        object[L"current"] = branch.name == workspace.branch();
        array.emplace_back(std::move(object));
    }
    writeJson(std::move(array), output);
}

/// For the completion of the shells; no name has a line feed.
void writeNames(Workspace& workspace, Output& output) {
    for (const Branch& branch : branchesOf(workspace))
        output.write(branch.name.toNarrow() + '\n');
}

Expected<void> list(const Arguments& arguments, Output& output) {
    const Expected<std::unique_ptr<Workspace>> workspace =
        Workspace::open(".", Workspace::Use::look, person());
    if (!workspace)
        return workspace.error();
    if (arguments.asJson)
        writeDocument(**workspace, output);
    else if (arguments.namesOnly)
        writeNames(**workspace, output);
    else
        writeBranches(**workspace, output);
    return {};
}

Expected<CommitEntry> make(Workspace& workspace, const OdString& name, const std::string& start) {
    if (const Expected<OdString> valid = checkedReferenceName(name); !valid)
        return valid.error();
    History& history = workspace.history();
    if (name == workspace.branch() || history.reference(name, RefType::Branch))
        return ErrorMessage{
            OdString::format(tr(L"There is a branch '%ls' already"), printable(name))};
    const Expected<OdString> commit =
        findCommit(history, OdString::fromNarrow(start), workspace.branch());
    if (!commit)
        return commit.error();
    history.setReference(name, RefType::Branch, *commit);
    logEvent(L"branch " + quotedName(name), workspace.root(), workspace.folder(), person());
    return history.commit(*commit).value();
}

/// Whether another branch or a tag stands for the commit, or for one that builds on it.
bool isHeldElsewhere(History& history, const OdString& branch, const OdString& commit) {
    const std::vector<common::Reference> references = history.references();
    return std::any_of(references.begin(), references.end(), [&](const auto& reference) {
        const bool isItself = reference.type == RefType::Branch && reference.name == branch;
        return !isItself && history.buildsOn(reference.commitHash, commit);
    });
}

ErrorMessage noBranch(History& history, const OdString& name) {
    OdString text = OdString::format(tr(L"There is no branch '%ls'"), printable(name));
    if (const auto meant = closest(name, namesOf(history, RefType::Branch)))
        text += OdString::format(tr(L"; did you mean '%ls'?"), printable(*meant));
    return {text};
}

Expected<CommitEntry> remove(Workspace& workspace, const OdString& name, bool force) {
    History& history = workspace.history();
    if (name == workspace.branch())
        return ErrorMessage{OdString::format(
            tr(L"'%ls' is the current branch (qrv switch goes to another one)"), printable(name))};
    const std::optional<OdString> commit = history.reference(name, RefType::Branch);
    if (!commit)
        return noBranch(history, name);
    if (!force && !isHeldElsewhere(history, name, *commit))
        return ErrorMessage{OdString::format(
            tr(L"'%ls' has commits that are in no other branch or tag (--force deletes it all the "
               L"same)"),
            printable(name))};
    history.removeReference(name, RefType::Branch);
    logEvent(L"deleted the branch " + quotedName(name), workspace.root(), workspace.folder(),
             person());
    return history.commit(*commit).value();
}

Expected<void> change(const Arguments& arguments, Output& output) {
    const Expected<std::unique_ptr<Workspace>> workspace =
        Workspace::open(".", Workspace::Use::change, person());
    if (!workspace)
        return workspace.error();
    const OdString name =
        OdString::fromNarrow(arguments.deleted.value_or(arguments.name.value_or("")));
    const Expected<CommitEntry> commit = arguments.deleted
                                             ? remove(**workspace, name, arguments.force)
                                             : make(**workspace, name, arguments.start);
    if (!commit)
        return commit.error();
    const OdString text = arguments.deleted
                              ? tr(L"Deleted the branch '%ls', which was at commit %i: %ls\n")
                              : tr(L"Made the branch '%ls' at commit %i: %ls\n");
    writeReference(name, *commit, text, arguments.asJson, output);
    return {};
}

}  // namespace

Action declareBranch(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    const Argument name = parser.addOption(
        "NAME", arguments->name, trUtf8(L"The branch to make (default: list the branches)"));
    parser
        .addOption("COMMIT", arguments->start,
                   trUtf8(L"Where it begins (default: the current branch's commit)"))
        .needs(name);
    const Argument deleted =
        parser.addOption("--delete", arguments->deleted, trUtf8(L"Delete the branch NAME"))
            .placeholder("NAME")
            .excludes(name);
    parser
        .addFlag("--force", arguments->force,
                 trUtf8(L"Delete it also when its commits are in no other branch or tag"))
        .needs(deleted);
    const Argument names =
        parser.addFlag("--names", arguments->namesOnly, trUtf8(L"List only the names"))
            .excludes(name);
    parser
        .addFlag("--json", arguments->asJson,
                 trUtf8(L"Print an array of objects with \"name\", \"commit\" and \"current\"; "
                        L"of a branch made or deleted its object alone"))
        .excludes(names);
    return [arguments](Output& output) {
        const bool changes = arguments->name || arguments->deleted;
        return changes ? change(*arguments, output) : list(*arguments, output);
    };
}

}  // namespace qrv::cli
