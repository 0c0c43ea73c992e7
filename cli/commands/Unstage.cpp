#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/text/ChangeText.h>
#include <engine/base/Translation.h>
#include <engine/operations/Unstage.h>

#include <memory>
#include <vector>

namespace qrv::cli {

namespace {

struct Arguments {
    UnstageRequest request;
    bool asJson = false;
};

Expected<void> run(const Arguments& arguments, Output& output) {
    const Expected<std::vector<common::StagedFile>> files =
        unstage(".", arguments.request, person());
    if (!files)
        return files.error();
    if (arguments.asJson)
        writeJson(toJson(*files), output);
    else
        output.write(OdString::format(tr(L"Taken off the stage: %i\n"), files->size()).toNarrow());
    return {};
}

}  // namespace

Action declareUnstage(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    const Argument paths = parser.addOption(
        "PATH", arguments->request.paths,
        trUtf8(L"Staged files, folders of them, globs, or the end of a file's name"));
    const Argument all = parser.addFlag("--all,-a", arguments->request.all, trUtf8(L"Everything"));
    parser.requireOne({paths, all}, "PATH or --all");
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print the files as JSON"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
