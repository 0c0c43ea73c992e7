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
    std::string commit = "HEAD";
    std::optional<std::string> deleted;
    bool namesOnly = false;
    bool asJson = false;
};

void writeTags(const std::vector<NamedReference>& tags, Output& output) {
    int width = 0;
    for (const NamedReference& tag : tags)
        width = std::max(width, printable(tag.name).getLength());
    for (const NamedReference& tag : tags)
        output.write(referenceLine(tag.name, width, tag.commit.value()).toNarrow());
}

void writeDocument(const std::vector<NamedReference>& tags, Output& output) {
    jsonlib::json::Array array;
    for (const NamedReference& tag : tags)
        array.emplace_back(referenceDocument(tag.name, tag.commit));
    writeJson(std::move(array), output);
}

/// For the completion of the shells; no name has a line feed.
void writeNames(const std::vector<NamedReference>& tags, Output& output) {
    for (const NamedReference& tag : tags)
        output.write(tag.name.toNarrow() + '\n');
}

Expected<void> list(const Arguments& arguments, Output& output) {
    const Expected<std::vector<NamedReference>> tags = listReferences(".", RefType::Tag, person());
    if (!tags)
        return tags.error();
    if (arguments.asJson)
        writeDocument(*tags, output);
    else if (arguments.namesOnly)
        writeNames(*tags, output);
    else
        writeTags(*tags, output);
    return {};
}

Expected<void> change(const Arguments& arguments, Output& output) {
    const OdString name =
        OdString::fromNarrow(arguments.deleted.value_or(arguments.name.value_or("")));
    const Expected<CommitEntry> commit =
        arguments.deleted
            ? deleteReference(".", {RefType::Tag, name}, person())
            : makeReference(".", {RefType::Tag, name, OdString::fromNarrow(arguments.commit)},
                            person());
    if (!commit)
        return commit.error();
    const OdString text = arguments.deleted
                              ? tr(L"Deleted the tag '%ls', which was at commit %i: %ls\n")
                              : tr(L"Made the tag '%ls' at commit %i: %ls\n");
    writeReference(name, *commit, text, arguments.asJson, output);
    return {};
}

}  // namespace

Action declareTag(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    const Argument name = parser.addOption("NAME", arguments->name,
                                           trUtf8(L"The tag to make (default: list the tags)"));
    parser
        .addOption("COMMIT", arguments->commit,
                   trUtf8(L"The commit that it names (default: the current branch's)"))
        .needs(name);
    parser.addOption("--delete", arguments->deleted, trUtf8(L"Delete the tag NAME"))
        .placeholder("NAME")
        .excludes(name);
    const Argument names =
        parser.addFlag("--names", arguments->namesOnly, trUtf8(L"List only the names"))
            .excludes(name);
    parser
        .addFlag("--json", arguments->asJson,
                 trUtf8(L"Print an array of objects with \"name\" and \"commit\"; of a tag made "
                        L"or deleted its object alone"))
        .excludes(names);
    return [arguments](Output& output) {
        const bool changes = arguments->name || arguments->deleted;
        return changes ? change(*arguments, output) : list(*arguments, output);
    };
}

}  // namespace qrv::cli
