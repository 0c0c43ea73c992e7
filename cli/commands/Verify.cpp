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

Expected<void> run(bool asJson, Output& output) {
    const Expected<Verified> verified = verify(".", person());
    if (!verified)
        return verified.error();
    const Verification& found = verified->found;
    if (asJson)
        writeJson(verificationDocument(found, verified->root), output);
    else
        output.write(verificationText(found));
    if (found.problems.empty())
        return {};
    return ErrorMessage{OdString::format(tr(L"Problems: %i"), found.problems.size())};
}

}  // namespace

Action declareVerify(const ArgumentParser& parser) {
    const auto asJson = std::make_shared<bool>(false);
    parser.addFlag("--json", *asJson, trUtf8(L"Print what was found as a JSON object"));
    return [asJson](Output& output) { return run(*asJson, output); };
}

}  // namespace qrv::cli
