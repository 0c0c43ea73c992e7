#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/terminal/Message.h>
#include <cli/text/CollectionText.h>
#include <engine/base/Translation.h>
#include <engine/operations/CollectGarbage.h>

#include <memory>

namespace qrv::cli {

namespace {

struct Arguments {
    bool onlyLook = false;
    bool asJson = false;
};

void print(const Collected& collected, const Arguments& arguments, Output& output) {
    if (arguments.asJson)
        return writeJson(collectionDocument(collected, arguments.onlyLook), output);
    output.write(collectionText(collected, arguments.onlyLook));
    for (const OdString& problem : collected.problems)
        printMessage(problem);
}

Expected<void> run(const Arguments& arguments, Output& output) {
    const Expected<Collected> collected =
        collectGarbage(".", {.onlyLook = arguments.onlyLook}, person());
    if (!collected)
        return collected.error();
    print(*collected, arguments, output);
    if (collected->problems.empty())
        return {};
    return ErrorMessage{
        OdString::format(tr(L"Not all could be collected; problems: %i (qrv verify tells more)"),
                         collected->problems.size())};
}

}  // namespace

Action declareGc(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser.addFlag("--dry-run,-n", arguments->onlyLook, trUtf8(L"Only tell what would be done"));
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print what was done as a JSON object"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
