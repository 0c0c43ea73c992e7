#include <CLI/CLI.hpp>
#include <cli/Failure.h>
#include <cli/Message.h>
#include <cli/Output.h>
#include <cli/commands/Commands.h>

#include <cstdio>
#include <sstream>

namespace qrv_cli {

namespace {

ExitStatus printHelpOnError(const CLI::App& app) {
    const std::string help = app.help();
    static_cast<void>(std::fwrite(help.data(), 1, help.size(), stderr));
    return kWrongUsage;
}

/// A wish for the help or the version is one of the parser's errors too.
ExitStatus answer(const CLI::App& app, const CLI::ParseError& error, Output& output) {
    if (error.get_exit_code() != 0) {
        printMessage(OdString(error.what()) + L" (see qrv --help)");
        return kWrongUsage;
    }
    std::ostringstream text;
    std::ostringstream unused;
    app.exit(error, text, unused);
    return carryOut(
        [&text](Output& out) {
            out.write(text.str());
            return Expected<void>();
        },
        output);
}

ExitStatus run(int argumentCount, const char* const* arguments) {
    Output output;
    CLI::App app{"Versions a folder of drawings.", "qrv"};
    app.set_version_flag("--version", "qrv " QRV_VERSION);
    // At most one, so that a folder may be called like a command. None is answered below: the
    // parser would not name the word that it took for a command.
    app.require_subcommand(0, 1);

    Action chosen;
    for (const Command& command : commands()) {
        CLI::App* const parser = app.add_subcommand(command.name, command.summary);
        parser->callback([&chosen, action = command.declare(*parser)] { chosen = action; });
    }
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::ParseError& error) {
        return answer(app, error, output);
    }
    return chosen ? carryOut(chosen, output) : printHelpOnError(app);
}

}  // namespace

}  // namespace qrv_cli

int main(int argumentCount, char** arguments) {
    return qrv_cli::run(argumentCount, arguments);
}
