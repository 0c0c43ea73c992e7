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
    std::string commit = "HEAD";
    std::optional<std::string> deleted;
    bool namesOnly = false;
    bool asJson = false;
};

/// The history gives out no tag without a commit.
CommitEntry commitOf(History& history, const OdString& tag) {
    return history.commit(history.reference(tag, RefType::Tag).value()).value();
}

void writeTags(History& history, const std::vector<OdString>& tags, Output& output) {
    int width = 0;
    for (const OdString& tag : tags)
        width = std::max(width, printable(tag).getLength());
    for (const OdString& tag : tags)
        output.write(referenceLine(tag, width, commitOf(history, tag)).toNarrow());
}

void writeDocument(History& history, const std::vector<OdString>& tags, Output& output) {
    jsonlib::json::Array array;
    for (const OdString& tag : tags)
        array.emplace_back(referenceDocument(tag, commitOf(history, tag)));
    writeJson(std::move(array), output);
}

/// For the completion of the shells; no name has a line feed.
void writeNames(const std::vector<OdString>& tags, Output& output) {
    for (const OdString& tag : tags)
        output.write(tag.toNarrow() + '\n');
}

Expected<void> list(const Arguments& arguments, Output& output) {
    const Expected<std::unique_ptr<Workspace>> workspace =
        Workspace::open(".", Workspace::Use::look, person());
    if (!workspace)
        return workspace.error();
    History& history = (*workspace)->history();
    const std::vector<OdString> tags = namesOf(history, RefType::Tag);
    if (arguments.asJson)
        writeDocument(history, tags, output);
    else if (arguments.namesOnly)
        writeNames(tags, output);
    else
        writeTags(history, tags, output);
    return {};
}

Expected<CommitEntry> make(Workspace& workspace, const OdString& name, const std::string& target) {
    if (const Expected<OdString> valid = checkedReferenceName(name); !valid)
        return valid.error();
    History& history = workspace.history();
    if (history.reference(name, RefType::Tag))
        return ErrorMessage{OdString::format(tr(L"There is a tag '%ls' already"), printable(name))};
    const Expected<OdString> commit =
        findCommit(history, OdString::fromNarrow(target), workspace.branch());
    if (!commit)
        return commit.error();
    history.setReference(name, RefType::Tag, *commit);
    logEvent(L"tag " + quotedName(name), workspace.root(), workspace.folder(), person());
    return history.commit(*commit).value();
}

Expected<CommitEntry> remove(Workspace& workspace, const OdString& name) {
    History& history = workspace.history();
    if (!history.reference(name, RefType::Tag)) {
        OdString text = OdString::format(tr(L"There is no tag '%ls'"), printable(name));
        if (const auto meant = closest(name, namesOf(history, RefType::Tag)))
            text += OdString::format(tr(L"; did you mean '%ls'?"), printable(*meant));
        return ErrorMessage{text};
    }
    CommitEntry commit = commitOf(history, name);
    history.removeReference(name, RefType::Tag);
    logEvent(L"deleted the tag " + quotedName(name), workspace.root(), workspace.folder(),
             person());
    return commit;
}

Expected<void> change(const Arguments& arguments, Output& output) {
    const Expected<std::unique_ptr<Workspace>> workspace =
        Workspace::open(".", Workspace::Use::change, person());
    if (!workspace)
        return workspace.error();
    const OdString name =
        OdString::fromNarrow(arguments.deleted.value_or(arguments.name.value_or("")));
    const Expected<CommitEntry> commit =
        arguments.deleted ? remove(**workspace, name) : make(**workspace, name, arguments.commit);
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
