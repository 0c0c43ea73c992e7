#include <cli/shell/Failure.h>
#include <cli/shell/Output.h>
#include <cli/terminal/Message.h>
#include <engine/base/Translation.h>
#include <engine/base/WithoutExceptions.h>

#include <system_error>

namespace qrv::cli {

namespace {

ExitStatus finish(Output& output) {
    const std::error_code failure = output.finish();
    if (!failure)
        return kDone;
    // Who reads only the first lines knows that the rest is missing.
    if (failure != std::errc::broken_pipe)
        printMessage(OdString::format(tr(L"Standard output cannot be written: %ls"),
                                      OdString(failure.message().c_str())));
    return kFailed;
}

}  // namespace

ExitStatus carryOut(const Action& action, Output& output) {
    const Expected<void> result = withoutExceptions([&] { return action(output); });
    const ExitStatus outputStatus = finish(output);
    if (result)
        return outputStatus;
    printMessage(result.error().message);
    return kFailed;
}

}  // namespace qrv::cli
