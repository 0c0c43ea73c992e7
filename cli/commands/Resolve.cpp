#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/text/ConflictText.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/operations/Resolve.h>

#include <memory>
#include <string>

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

ResolveRequest requestOf(const Arguments& arguments) {
    using Version = ResolveRequest::Version;
    const Version version = arguments.mine     ? Version::mine
                            : arguments.theirs ? Version::theirs
                                               : Version::merged;
    return {.path = arguments.path, .version = version, .force = arguments.force};
}

Expected<void> run(const Arguments& arguments, Output& output) {
    const Expected<Resolved> resolved = resolve(".", requestOf(arguments), person());
    if (!resolved)
        return resolved.error();
    if (arguments.asJson)
        writeJson(toJson(resolved->conflicts), output);
    else
        output.write(OdString::format(tr(L"Resolved '%ls'; conflicts left: %i\n"),
                                      printable(resolved->path), resolved->conflicts.size())
                         .toNarrow());
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
