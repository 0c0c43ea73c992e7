#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/operations/Restore.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace qrv::cli {

namespace {

struct Arguments {
    std::vector<std::string> paths;
    std::optional<std::string> from;
    std::optional<std::string> folder;
    bool dryRun = false;
    bool force = false;
    bool asJson = false;
};

/// For the parser: empty, or what is wrong with the folder.
std::string refusalOfFolder(const std::string& folder) {
    return folder.empty() ? trUtf8(L"A folder's name cannot be empty") : std::string();
}

void print(const std::vector<OdString>& paths, const Arguments& arguments, Output& output) {
    if (arguments.asJson) {
        jsonlib::json::Array array;
        for (const OdString& path : paths)
            array.emplace_back(path.toWide());
        return writeJson(std::move(array), output);
    }
    for (const OdString& path : paths)
        output.write((L"  " + printable(path) + L"\n").toNarrow());
    const OdString text =
        arguments.dryRun ? tr(L"Files that would be restored: %i\n") : tr(L"Files restored: %i\n");
    output.write(OdString::format(text, paths.size()).toNarrow());
}

Expected<void> run(const Arguments& arguments, Output& output) {
    RestoreRequest request = {.paths = arguments.paths,
                              .commit = std::nullopt,
                              .dryRun = arguments.dryRun,
                              .force = arguments.force};
    if (arguments.from)
        request.commit = OdString::fromNarrow(*arguments.from);
    const Expected<std::vector<OdString>> files =
        arguments.folder ? exportFiles(".", request, *arguments.folder, person())
                         : restoreFiles(".", request, person());
    if (!files)
        return files.error();
    print(*files, arguments, output);
    return {};
}

}  // namespace

Action declareRestore(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser.addOption("PATH", arguments->paths, trUtf8(L"Files and folders")).required();
    parser
        .addOption("--from", arguments->from,
                   trUtf8(L"The commit whose versions are wanted (default: HEAD)"))
        .placeholder("COMMIT");
    parser
        .addOption("--to", arguments->folder,
                   trUtf8(L"Write them into this folder, not into the repository"))
        .placeholder("DIR")
        .check(refusalOfFolder);
    parser.addFlag("--dry-run", arguments->dryRun, trUtf8(L"Only say what would be restored"));
    parser.addFlag("--force", arguments->force, trUtf8(L"Also replace unsaved changes"));
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print the paths as JSON"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
