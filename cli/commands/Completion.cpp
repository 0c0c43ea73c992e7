#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/CommandLine.h>
#include <cli/shell/Completion.h>
#include <cli/shell/Output.h>
#include <engine/base/Translation.h>

#include <memory>
#include <string>

namespace qrv::cli {

Action declareCompletion(const ArgumentParser& parser) {
    const auto shell = std::make_shared<std::string>();
    parser.addOption("SHELL", *shell, trUtf8(L"bash, zsh or fish"))
        .required()
        .oneOf({"bash", "zsh", "fish"});
    return [shell](Output& output) -> Expected<void> {
        output.write(completionScript(*shell, CommandLine(commands()).texts()));
        return {};
    };
}

}  // namespace qrv::cli
