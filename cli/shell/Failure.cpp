#include <cli/shell/Failure.h>
#include <cli/shell/Output.h>
#include <cli/terminal/Message.h>
#include <engine/base/Translation.h>

#include <exception>
#include <new>
#include <system_error>

namespace qrv::cli {

namespace {

Expected<void> withoutExceptions(const Action& action, Output& output) {
    try {
        return action(output);
    } catch (const std::bad_alloc&) {
        return ErrorMessage{tr(L"There is not enough memory.")};
    } catch (const std::exception& exception) {
        return ErrorMessage{OdString(exception.what())};
    }
}

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
    const Expected<void> result = withoutExceptions(action, output);
    const ExitStatus outputStatus = finish(output);
    if (result)
        return outputStatus;
    printMessage(result.error().message);
    return kFailed;
}

}  // namespace qrv::cli
