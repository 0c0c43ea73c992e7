#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/text/Names.h>
#include <cli/text/StatusText.h>
#include <engine/base/Translation.h>
#include <engine/operations/Status.h>

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace qrv::cli {

namespace {

using common::StagedFile;

struct Arguments {
    std::string folder = ".";
    bool namesOnly = false;
    bool endWithNul = false;
    bool asJson = false;
};

/// All paths that the plain text names, each once and sorted.
void writeNames(const Status& status, std::string_view end, Output& output) {
    std::set<OdString> names;
    for (const auto* files : {&status.staged, &status.unstaged}) {
        for (const StagedFile& file : *files)
            names.insert(file.path);
    }
    for (const common::ConflictData& conflict : status.conflicts)
        names.insert(conflict.path);
    for (const OdString& name : names) {
        output.write(nameForOutput(name));
        output.write(end);
    }
}

void write(const Status& status, const Arguments& arguments, Output& output) {
    if (arguments.asJson)
        writeJson(statusDocument(status), output);
    else if (arguments.namesOnly)
        writeNames(status, arguments.endWithNul ? std::string_view("\0", 1) : "\n", output);
    else
        output.write(statusText(status));
}

ErrorMessage notAllSeen(const std::vector<Unseen>& unseen) {
    OdString text = tr(L"Not everything can be looked at:");
    for (const Unseen& each : unseen)
        text += L"\n  " + textOf(each);
    return {text};
}

Expected<void> showStatus(const Arguments& arguments, Output& output) {
    const Expected<Status> found = status(arguments.folder, person());
    if (!found)
        return found.error();
    write(*found, arguments, output);
    return found->unseen.empty() ? Expected<void>() : notAllSeen(found->unseen);
}

}  // namespace

Action declareStatus(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser.addOption("DIR", arguments->folder,
                     trUtf8(L"A folder in the repository (default: the current one)"));
    const Argument names = parser.addFlag("--names", arguments->namesOnly,
                                          trUtf8(L"Print only the paths of what has changed"));
    parser
        .addFlag("-0", arguments->endWithNul, trUtf8(L"End each path with a NUL, not a line feed"))
        .needs(names);
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print the status as a JSON object"))
        .excludes(names);
    return [arguments](Output& output) { return showStatus(*arguments, output); };
}

}  // namespace qrv::cli
