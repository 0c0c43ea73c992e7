#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/text/RecoveryText.h>
#include <engine/base/Translation.h>
#include <engine/operations/RebuildHistory.h>
#include <engine/operations/Recover.h>

#include <memory>
#include <optional>

namespace qrv::cli {

namespace {

struct Arguments {
    bool onlyLook = false;
    bool forgets = false;
    bool rebuilds = false;
    bool asJson = false;
};

Expected<void> rebuild(const Arguments& arguments, Output& output) {
    const Expected<Rebuilt> rebuilt = rebuildHistory(".", person());
    if (!rebuilt)
        return rebuilt.error();
    if (arguments.asJson)
        writeJson(rebuiltDocument(*rebuilt), output);
    else
        output.write(rebuiltText(*rebuilt));
    if (rebuilt->problems.empty())
        return {};
    return ErrorMessage{OdString::format(tr(L"Not all could be made anew; problems: %i"),
                                         rebuilt->problems.size())};
}

Expected<void> run(const Arguments& arguments, Output& output) {
    if (arguments.rebuilds)
        return rebuild(arguments, output);
    const Recover what = arguments.onlyLook  ? Recover::look
                         : arguments.forgets ? Recover::forget
                                             : Recover::settle;
    const Expected<std::optional<InterruptedOperation>> operation = recover(".", what, person());
    if (!operation)
        return operation.error();
    if (arguments.asJson)
        writeJson(recoveryDocument(*operation, what), output);
    else
        output.write(recoveryText(*operation, what));
    return {};
}

}  // namespace

Action declareRecover(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    const Argument look = parser.addFlag("--dry-run,-n", arguments->onlyLook,
                                         trUtf8(L"Only tell what would be done"));
    const Argument forget =
        parser
            .addFlag("--forget", arguments->forgets,
                     trUtf8(L"Leave the files as they are, and forget what was interrupted"))
            .excludes(look);
    parser
        .addFlag("--history", arguments->rebuilds,
                 trUtf8(L"Make a lost, older or damaged history anew from the records beside it"))
        .excludes(look)
        .excludes(forget);
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print what was done as a JSON object"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
