#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/terminal/Message.h>
#include <cli/text/Names.h>
#include <common/json/Value.h>
#include <common/worktree/VisitRepoFiles.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/paths/Layout.h>
#include <engine/repository/FindRepository.h>
#include <engine/repository/MetadataCheck.h>
#include <engine/worktree/IgnoreRules.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qrv::cli {

namespace {

struct Arguments {
    std::string folder = ".";
    bool asJson = false;
    bool endWithNul = false;
};

void writePaths(const std::vector<OdString>& files, std::string_view end, Output& output) {
    for (const OdString& file : files) {
        output.write(nameForOutput(file));
        output.write(end);
    }
}

void writePathsAsJson(const std::vector<OdString>& files, Output& output) {
    jsonlib::json::Array paths;
    paths.reserve(files.size());
    for (const OdString& file : files)
        paths.emplace_back(file.toWide());
    writeJson(std::move(paths), output);
}

Expected<void> listFiles(const Arguments& arguments, Output& output) {
    const Expected<RepositoryPlace> repository = openRepository(arguments.folder, person());
    if (!repository)
        return repository.error();
    IgnoreRules rules(repository->root, printMessage);
    std::vector<OdString> files;
    OdString unread;
    const auto addUnread = [&unread](const OdString& path) {
        unread += L"\n  " + (path.isEmpty() ? OdString(L".") : printable(path));
    };
    Expected<void> visited = common::visitRepoFiles(
        repository->root, [&rules](const OdString& name) { return rules.match(name) != nullptr; },
        [&files](OdString path) { files.push_back(std::move(path)); }, addUnread);
    if (!visited)
        return visited;
    if (!rules.isRead())
        addUnread(OdString(layout::ignoreRulesPath));
    // The folders and the rules were read by their paths.
    if (Expected<void> checked = checkMetadata(repository->folder, repository->root.path());
        !checked)
        return checked;
    if (arguments.asJson)
        writePathsAsJson(files, output);
    else
        writePaths(files, arguments.endWithNul ? std::string_view("\0", 1) : "\n", output);
    if (!unread.isEmpty())
        return ErrorMessage{tr(L"Not everything can be looked at:") + unread};
    return {};
}

}  // namespace

Action declareFiles(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser.addOption("DIR", arguments->folder,
                     trUtf8(L"A folder in the repository (default: the current one)"));
    const Argument json =
        parser.addFlag("--json", arguments->asJson, trUtf8(L"Print the paths as a JSON array"));
    parser
        .addFlag("-0", arguments->endWithNul, trUtf8(L"End each path with a NUL, not a line feed"))
        .excludes(json);
    return [arguments](Output& output) { return listFiles(*arguments, output); };
}

}  // namespace qrv::cli
