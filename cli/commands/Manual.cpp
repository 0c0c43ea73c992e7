#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/CommandLine.h>
#include <cli/shell/Manual.h>
#include <cli/shell/Output.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>

#include <memory>
#include <string>
#include <vector>

namespace qrv::cli {

namespace {

Expected<void> printPage(const std::string& name, Output& output) {
    const std::vector<CommandText> all = CommandLine(commands()).texts();
    for (const CommandText& command : all) {
        if (command.name != name)
            continue;
        output.write(manualPage(command, all));
        return {};
    }
    return ErrorMessage{
        OdString::format(tr(L"There is no command '%ls'"), printable(OdString::fromNarrow(name)))};
}

void printNames(Output& output) {
    for (const CommandText& command : CommandLine(commands()).texts()) {
        if (!command.name.empty())
            output.write(command.name + "\n");
    }
}

}  // namespace

Action declareManual(const ArgumentParser& parser) {
    const auto command = std::make_shared<std::string>();
    const auto lists = std::make_shared<bool>(false);
    const Argument name =
        parser.addOption("COMMAND", *command, trUtf8(L"The command (default: the program)"));
    parser.addFlag("--list", *lists, trUtf8(L"List the commands that have a page")).excludes(name);
    return [command, lists](Output& output) -> Expected<void> {
        if (!*lists)
            return printPage(*command, output);
        printNames(output);
        return {};
    };
}

}  // namespace qrv::cli
