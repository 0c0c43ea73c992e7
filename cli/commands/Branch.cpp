#include <cli/commands/Commands.h>
#include <cli/commands/ReferenceList.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/text/CommitText.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/operations/NamedReferences.h>

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

void writeBranches(const std::vector<NamedReference>& branches, Output& output) {
    int width = 0;
    for (const NamedReference& branch : branches)
        width = std::max(width, printable(branch.name).getLength());
    for (const NamedReference& branch : branches) {
        const OdString mark = branch.isCurrent ? L"* " : L"  ";
        const OdString line =
            branch.commit
                ? mark + referenceLine(branch.name, width, *branch.commit)
                : OdString::format(tr(L"* %ls  (no commit yet)\n"), printable(branch.name));
        output.write(line.toNarrow());
    }
}

void writeDocument(const std::vector<NamedReference>& branches, Output& output) {
    jsonlib::json::Array array;
    for (const NamedReference& branch : branches) {
        jsonlib::json::Object object = referenceDocument(branch.name, branch.commit);
        object[L"current"] = branch.isCurrent;
        array.emplace_back(std::move(object));
    }
    writeJson(std::move(array), output);
}

/// For the completion of the shells; no name has a line feed.
void writeNames(const std::vector<NamedReference>& branches, Output& output) {
    for (const NamedReference& branch : branches)
        output.write(branch.name.toNarrow() + '\n');
}

Expected<void> list(const Arguments& arguments, Output& output) {
    const Expected<std::vector<NamedReference>> branches =
        listReferences(".", RefType::Branch, person());
    if (!branches)
        return branches.error();
    if (arguments.asJson)
        writeDocument(*branches, output);
    else if (arguments.namesOnly)
        writeNames(*branches, output);
    else
        writeBranches(*branches, output);
    return {};
}

Expected<void> change(const Arguments& arguments, Output& output) {
    const OdString name =
        OdString::fromNarrow(arguments.deleted.value_or(arguments.name.value_or("")));
    const Expected<CommitEntry> commit =
        arguments.deleted
            ? deleteReference(".", {RefType::Branch, name, arguments.force}, person())
            : makeReference(".", {RefType::Branch, name, OdString::fromNarrow(arguments.start)},
                            person());
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
