#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/text/CommitText.h>
#include <cli/text/ConflictText.h>
#include <cli/user/Author.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/history/CommitName.h>
#include <engine/journal/OpenTree.h>
#include <engine/operations/MergeInternal.h>
#include <engine/worktree/WorkingTree.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace qrv::cli {

namespace {

struct Arguments {
    std::string name;
    std::optional<std::string> message;
    std::optional<std::string> author;
    bool aborts = false;
    bool force = false;
    bool asJson = false;
};

const wchar_t* codeOf(MergeOutcome::Kind kind) {
    switch (kind) {
        case MergeOutcome::Kind::upToDate:
            return L"upToDate";
        case MergeOutcome::Kind::forward:
            return L"forward";
        case MergeOutcome::Kind::committed:
            return L"committed";
        case MergeOutcome::Kind::conflicts:
            break;
    }
    return L"conflicts";
}

jsonlib::json::Value documentOf(const MergeOutcome& outcome, const common::State& state) {
    jsonlib::json::Array files;
    for (const TreeStep& file : outcome.files.taken)
        files.emplace_back(file.path.text().toWide());
    jsonlib::json::Object object;
    object[L"result"] = codeOf(outcome.kind);
    object[L"files"] = std::move(files);
    object[L"conflicts"] = toJson(state.conflicts);
    if (outcome.commit)
        object[L"commit"] = toJson(*outcome.commit);
    return object;
}

OdString text(const MergeOutcome& outcome, const OdString& name) {
    const std::size_t count = outcome.files.taken.size();
    switch (outcome.kind) {
        case MergeOutcome::Kind::upToDate:
            return OdString::format(tr(L"'%ls' is merged already\n"), name);
        case MergeOutcome::Kind::forward:
            return OdString::format(tr(L"Went forward to '%ls'; files changed: %i\n"), name, count);
        case MergeOutcome::Kind::committed:
            return OdString::format(tr(L"Merged '%ls' as commit %i; files changed: %i\n"), name,
                                    outcome.commit->number, count);
        case MergeOutcome::Kind::conflicts:
            break;
    }
    return OdString::format(tr(L"Merging '%ls'; files changed: %i\n"), name, count);
}

/// Open conflicts are no success, so that a script notices.
Expected<void> answer(const MergeOutcome& outcome) {
    if (outcome.kind != MergeOutcome::Kind::conflicts)
        return {};
    return ErrorMessage{OdString::format(
        tr(L"Conflicts to resolve with qrv resolve, before qrv commit ends the merge: %i"),
        outcome.files.conflicts.size())};
}

Expected<void> abort(WorkingTree& workingTree, const Arguments& arguments, Output& output) {
    if (const Expected<void> done = abortMerge(workingTree, arguments.force); !done)
        return done.error();
    if (!arguments.asJson)
        output.write(tr(L"The merge is taken back\n").toNarrow());
    else
        writeJson(jsonlib::json::Object{}, output);
    return {};
}

Expected<void> run(const Arguments& arguments, Output& output) {
    const Expected<OdString> author = authorOf(arguments.author);
    if (!author)
        return author.error();
    const Expected<std::unique_ptr<WorkingTree>> workingTree =
        openTree(".", Repository::Use::change, person());
    if (!workingTree)
        return workingTree.error();
    if (arguments.aborts)
        return abort(**workingTree, arguments, output);
    const OdString name = OdString::fromNarrow(arguments.name);
    const Expected<OdString> commit = findCommit((*workingTree)->repository().history(), name,
                                                 (*workingTree)->repository().branch());
    if (!commit)
        return commit.error();
    const CommitText words = {
        *author, arguments.message ? OdString::fromNarrow(*arguments.message)
                                   : OdString::format(L"Merge '%ls' into '%ls'", name,
                                                      (*workingTree)->repository().branch())};
    const Expected<MergeOutcome> outcome = merge(**workingTree, *commit, name, words);
    if (!outcome)
        return outcome.error();
    if (arguments.asJson)
        writeJson(documentOf(*outcome, (*workingTree)->repository().state()), output);
    else
        output.write((text(*outcome, printable(name)) +
                      conflictLines((*workingTree)->repository().state().conflicts))
                         .toNarrow());
    return answer(*outcome);
}

}  // namespace

Action declareMerge(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    const Argument name =
        parser.addOption("COMMIT", arguments->name,
                         trUtf8(L"The branch, tag or commit to merge into the current branch"));
    const Argument abort = parser.addFlag("--abort", arguments->aborts,
                                          trUtf8(L"Take back the merge that is going on"));
    parser.requireOne({name, abort}, "COMMIT or --abort");
    parser.addOption("-m,--message", arguments->message,
                     trUtf8(L"The message of the merge's commit"));
    parser.addOption("--author", arguments->author,
                     trUtf8(L"Who did it (default: $QRV_AUTHOR, else user@host)"));
    parser.addFlag("--force", arguments->force,
                   trUtf8(L"With --abort: also replace files that were edited since"));
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print the result as JSON"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
