#include <cli/commands/Commands.h>
#include <cli/shell/CommandLine.h>
#include <cli/shell/Failure.h>
#include <cli/shell/Output.h>
#include <cli/shell/Translations.h>
#include <cli/terminal/Message.h>
#include <engine/base/Suggestion.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <sys/Interruption.h>
#include <sys/Memory.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace qrv::cli {

namespace {

ExitStatus printHelpOnError(const CommandLine& line) {
    const std::string help = line.help();
    static_cast<void>(std::fwrite(help.data(), 1, help.size(), stderr));
    return kWrongUsage;
}

ExitStatus print(const std::string& text, Output& output) {
    return carryOut(
        [&text](Output& out) {
            out.write(text);
            return Expected<void>();
        },
        output);
}

Expected<void> enter(const std::string& folder) {
    std::error_code error;
    std::filesystem::current_path(folder, error);
    if (!error)
        return {};
    return systemFailure(tr(L"'%ls' cannot be opened: %ls"), OdString::fromNarrow(folder), error);
}

/// The first word that is no option, which must have been meant as a command.
std::string wordForCommand(int argumentCount, const char* const* arguments) {
    for (int index = 1; index < argumentCount; ++index) {
        std::string word = arguments[index];
        if (word == "-C")
            ++index;
        else if (word.rfind('-', 0) != 0)
            return word;
    }
    return {};
}

ExitStatus refuseCommand(const std::string& word) {
    std::vector<OdString> names;
    for (const Command& command : commands())
        names.emplace_back(command.name);
    const OdString typed = OdString::fromNarrow(word);
    OdString text = OdString::format(tr(L"'%ls' is not a command (see qrv --help)"), typed);
    if (const std::optional<OdString> meant = closest(typed, names))
        text += OdString::format(tr(L"; did you mean '%ls'?"), *meant);
    printMessage(text);
    return kWrongUsage;
}

bool isCommand(const std::string& word) {
    return std::any_of(commands().begin(), commands().end(),
                       [&word](const Command& command) { return command.name == word; });
}

ExitStatus refuse(int argumentCount, const char* const* arguments, const ErrorMessage& reason) {
    const std::string word = wordForCommand(argumentCount, arguments);
    if (!word.empty() && !isCommand(word))
        return refuseCommand(word);
    printMessage(OdString::format(tr(L"%ls (see qrv --help)"), reason.message));
    return kWrongUsage;
}

bool isGiven(std::string_view option, int argumentCount, const char* const* arguments) {
    return std::find(arguments, arguments + argumentCount, option) != arguments + argumentCount;
}

/// Those that the command line needs to know: most of a short command's time would go into
/// declaring the arguments of all others.
std::span<const Command> neededCommands(int argumentCount, const char* const* arguments) {
    const std::string word = wordForCommand(argumentCount, arguments);
    const std::span<const Command> all = commands();
    for (std::size_t place = 0; place < all.size(); ++place) {
        if (all[place].name == word)
            return all.subspan(place, 1);
    }
    const bool wishesVersionAlone = argumentCount == 2 && isGiven("--version", 2, arguments);
    return wishesVersionAlone ? std::span<const Command>() : all;
}

ExitStatus run(int argumentCount, const char* const* arguments) {
    Output output;
    const Translations translations;
    CommandLine line(neededCommands(argumentCount, arguments));
    if (const Expected<void> parsed = line.parse(argumentCount, arguments); !parsed)
        return refuse(argumentCount, arguments, parsed.error());
    if (line.wishedText())
        return print(*line.wishedText(), output);
    if (!line.chosen())
        return printHelpOnError(line);
    const auto inFolder = [&line](Output& out) {
        const Expected<void> entered = line.folder() ? enter(*line.folder()) : Expected<void>();
        return entered ? line.chosen()(out) : entered;
    };
    return carryOut(inFolder, output);
}

}  // namespace

}  // namespace qrv::cli

int main(int argumentCount, char** arguments) {
    sys::takeMemoryInLargeSteps();
    const int status = qrv::cli::run(argumentCount, arguments);
    // A shell goes on with its script unless it sees that the person has cancelled.
    if (status != 0)
        sys::Interruption::carryOut();
    return status;
}
