#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/text/VerificationText.h>
#include <common/json/Value.h>
#include <engine/base/Translation.h>
#include <engine/operations/Verify.h>

#include <memory>

namespace qrv::cli {

namespace {

struct Arguments {
    bool isQuick = false;
    bool asJson = false;
};

Expected<void> run(const Arguments& arguments, Output& output) {
    const Expected<Verified> verified = verify(".", {.onlyStructure = arguments.isQuick}, person());
    if (!verified)
        return verified.error();
    const Verification& found = verified->found;
    if (arguments.asJson)
        writeJson(verificationDocument(found, verified->root), output);
    else
        output.write(verificationText(found, arguments.isQuick));
    if (found.problems.empty())
        return {};
    return ErrorMessage{OdString::format(tr(L"Problems: %i"), found.problems.size())};
}

}  // namespace

Action declareVerify(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser.addFlag("--quick", arguments->isQuick,
                   trUtf8(L"Only look whether everything is there, and read no contents"));
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print what was found as a JSON object"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
