#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/text/ConflictText.h>
#include <cli/text/MergeText.h>
#include <cli/user/Author.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/operations/Merge.h>

#include <memory>
#include <optional>
#include <string>

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

/// Open conflicts are no success, so that a script notices.
Expected<void> answer(const Merged& merged) {
    if (merged.kind != Merged::Kind::conflicts)
        return {};
    return ErrorMessage{OdString::format(
        tr(L"Conflicts to resolve with qrv resolve, before qrv commit ends the merge: %i"),
        merged.conflicts.size())};
}

Expected<void> abort(const Arguments& arguments, Output& output) {
    if (const Expected<void> done = abortMerge(".", arguments.force, person()); !done)
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
    if (arguments.aborts)
        return abort(arguments, output);
    MergeRequest request = {OdString::fromNarrow(arguments.name), *author, std::nullopt};
    if (arguments.message)
        request.message = OdString::fromNarrow(*arguments.message);
    const Expected<Merged> merged = merge(".", request, person());
    if (!merged)
        return merged.error();
    if (arguments.asJson)
        writeJson(mergeDocument(*merged), output);
    else
        output.write(
            (mergeText(*merged, printable(request.commit)) + conflictLines(merged->conflicts))
                .toNarrow());
    return answer(*merged);
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
