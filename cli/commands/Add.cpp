#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/terminal/Message.h>
#include <cli/text/ChangeText.h>
#include <cli/text/StagingWarnings.h>
#include <cli/user/Settings.h>
#include <engine/base/Translation.h>
#include <engine/operations/Add.h>

#include <memory>
#include <vector>

namespace qrv::cli {

namespace {

using common::StagedFile;

struct Arguments {
    AddRequest request;
    bool asJson = false;
};

void print(const std::vector<StagedFile>& files, bool asJson, Output& output) {
    if (asJson)
        return writeJson(toJson(files), output);
    for (const StagedFile& file : files)
        output.write(changeLine(file.change, file.path).toNarrow());
    output.write(OdString::format(tr(L"Staged: %i\n"), files.size()).toNarrow());
}

Expected<void> run(const Arguments& arguments, Output& output) {
    const Expected<Settings> read = readSettings();
    const Settings settings = read ? *read : Settings();
    AddRequest request = arguments.request;
    request.largeFileBytes = largeFileBytes(settings);
    const Expected<Added> added = add(".", request, person());
    if (!added)
        return added.error();
    if (!read)
        printMessage(
            OdString::format(tr(L"Note: your settings are not used: %ls"), read.error().message));
    warnOfStaged(*added, settings);
    print(added->staged, arguments.asJson, output);
    return {};
}

}  // namespace

Action declareAdd(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    const Argument paths = parser.addOption(
        "PATH", arguments->request.paths,
        trUtf8(L"Files and folders, globs such as '*.dxf', or the end of a file's name"));
    const Argument all =
        parser.addFlag("--all,-a", arguments->request.all, trUtf8(L"Everything that has changed"));
    parser.requireOne({paths, all}, "PATH or --all");
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print the staged files as JSON"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
