#include <cli/commands/ReferenceCommand.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/text/CommitText.h>
#include <common/json/Value.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/history/ShortForms.h>
#include <engine/operations/NamedReferences.h>
#include <platform/kernel/OdString.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace qrv::cli {

namespace {

using common::RefType;
using jsonlib::json::Object;

Object documentOf(const OdString& name, const std::optional<CommitEntry>& commit) {
    Object object;
    object[L"name"] = name.toWide();
    object[L"commit"] = commit ? jsonlib::json::Value(toJson(*commit)) : jsonlib::json::Value();
    return object;
}

void writeDocument(RefType type, const std::vector<NamedReference>& references, Output& output) {
    jsonlib::json::Array array;
    for (const NamedReference& reference : references) {
        Object object = documentOf(reference.name, reference.commit);
        if (type == RefType::Branch)
            object[L"current"] = reference.isCurrent;
        array.emplace_back(std::move(object));
    }
    writeJson(std::move(array), output);
}

/// For the completion of the shells; no name has a line feed.
void writeNames(const std::vector<NamedReference>& references, Output& output) {
    for (const NamedReference& reference : references)
        output.write(reference.name.toNarrow() + '\n');
}

/// "* master  3  1f0c5b7a2e  Move the stairs" and a line feed, with the name filled up to `width`
/// units; of a tag without what marks the current branch.
OdString lineOf(RefType type, const NamedReference& reference, int width) {
    if (!reference.commit)
        return OdString::format(tr(L"* %ls  (no commit yet)\n"), printable(reference.name));
    OdString filled = printable(reference.name);
    while (filled.getLength() < width)
        filled += L' ';
    const OdString mark = reference.isCurrent ? L"* " : L"  ";
    return (type == RefType::Branch ? mark : OdString()) +
           OdString::format(L"%ls  %i  %ls  %ls\n", filled, reference.commit->number,
                            shortHash(reference.commit->hash),
                            printable(titleOf(*reference.commit)));
}

void writeLines(RefType type, const std::vector<NamedReference>& references, Output& output) {
    int width = 0;
    for (const NamedReference& reference : references)
        width = std::max(width, printable(reference.name).getLength());
    for (const NamedReference& reference : references)
        output.write(lineOf(type, reference, width).toNarrow());
}

Expected<void> list(RefType type, const ReferenceArguments& arguments, Output& output) {
    const Expected<std::vector<NamedReference>> references = listReferences(".", type, person());
    if (!references)
        return references.error();
    if (arguments.asJson)
        writeDocument(type, *references, output);
    else if (arguments.namesOnly)
        writeNames(*references, output);
    else
        writeLines(type, *references, output);
    return {};
}

OdString madeText(RefType type) {
    return type == RefType::Branch ? tr(L"Made the branch '%ls' at commit %i: %ls\n")
                                   : tr(L"Made the tag '%ls' at commit %i: %ls\n");
}

OdString deletedText(RefType type) {
    return type == RefType::Branch ? tr(L"Deleted the branch '%ls', which was at commit %i: %ls\n")
                                   : tr(L"Deleted the tag '%ls', which was at commit %i: %ls\n");
}

Expected<void> change(RefType type, const ReferenceArguments& arguments, Output& output) {
    const OdString name =
        OdString::fromNarrow(arguments.deleted ? *arguments.deleted : *arguments.name);
    const Expected<CommitEntry> commit =
        arguments.deleted
            ? deleteReference(".", {type, name, arguments.force}, person())
            : makeReference(".", {type, name, OdString::fromNarrow(arguments.commit)}, person());
    if (!commit)
        return commit.error();
    if (arguments.asJson) {
        writeJson(documentOf(name, *commit), output);
        return {};
    }
    const OdString text = arguments.deleted ? deletedText(type) : madeText(type);
    output.write(
        OdString::format(text, printable(name), commit->number, printable(titleOf(*commit)))
            .toNarrow());
    return {};
}

}  // namespace

Expected<void> runReferenceCommand(RefType type, const ReferenceArguments& arguments,
                                   Output& output) {
    const bool changes = arguments.name || arguments.deleted;
    return changes ? change(type, arguments, output) : list(type, arguments, output);
}

}  // namespace qrv::cli
