#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/operations/Switch.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace qrv::cli {

namespace {

struct Arguments {
    std::string branch;
    std::optional<std::string> start;
    bool creates = false;
    bool asJson = false;
};

jsonlib::json::Value toJson(const Switched& switched) {
    jsonlib::json::Object object;
    object[L"branch"] = switched.branch.toWide();
    object[L"commit"] = switched.commit.toWide();
    object[L"files"] = static_cast<std::uint64_t>(switched.fileCount);
    return object;
}

Expected<void> run(const Arguments& arguments, Output& output) {
    SwitchRequest request;
    request.branch = OdString::fromNarrow(arguments.branch);
    request.create = arguments.creates;
    if (arguments.start)
        request.start = OdString::fromNarrow(*arguments.start);
    const Expected<Switched> switched = switchBranch(".", request, person());
    if (!switched)
        return switched.error();
    if (arguments.asJson)
        writeJson(toJson(*switched), output);
    else
        output.write(OdString::format(tr(L"On branch '%ls'; files changed: %i\n"),
                                      printable(switched->branch), switched->fileCount)
                         .toNarrow());
    return {};
}

}  // namespace

Action declareSwitch(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser.addOption("BRANCH", arguments->branch, trUtf8(L"The branch to work on")).required();
    const Argument start = parser.addOption(
        "COMMIT", arguments->start,
        trUtf8(L"Where a new branch begins (default: the current branch's commit)"));
    const Argument create =
        parser.addFlag("-c,--create", arguments->creates, trUtf8(L"Make the branch"));
    start.needs(create);
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print the result as JSON"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
