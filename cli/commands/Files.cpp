#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/text/Names.h>
#include <common/json/Value.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/operations/Files.h>

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

/// What is below these is missing in the list.
ErrorMessage notLookedAt(const std::vector<OdString>& unread) {
    OdString text = tr(L"Not everything can be looked at:");
    for (const OdString& path : unread)
        text += L"\n  " + (path.isEmpty() ? OdString(L".") : printable(path));
    return {text};
}

Expected<void> run(const Arguments& arguments, Output& output) {
    const Expected<ListedFiles> listed = listFiles(arguments.folder, person());
    if (!listed)
        return listed.error();
    if (arguments.asJson)
        writePathsAsJson(listed->files, output);
    else
        writePaths(listed->files, arguments.endWithNul ? std::string_view("\0", 1) : "\n", output);
    if (!listed->unread.empty())
        return notLookedAt(listed->unread);
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
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
