#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/text/CommitText.h>
#include <cli/user/Author.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/operations/Commit.h>

#include <memory>
#include <optional>
#include <string>

namespace qrv::cli {

namespace {

struct Arguments {
    std::string message;
    std::optional<std::string> author;
    bool asJson = false;
};

Expected<void> run(const Arguments& arguments, Output& output) {
    const Expected<OdString> author = authorOf(arguments.author);
    if (!author)
        return author.error();
    const Expected<Committed> made =
        commit(".", {*author, OdString::fromNarrow(arguments.message)}, person());
    if (!made)
        return made.error();
    if (arguments.asJson)
        writeJson(toJson(made->commit), output);
    else
        output.write(OdString::format(tr(L"Commit %i on %ls: %ls\n"), made->commit.number,
                                      printable(made->branch), printable(titleOf(made->commit)))
                         .toNarrow());
    return {};
}

}  // namespace

Action declareCommit(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser.addOption("-m,--message", arguments->message, trUtf8(L"What was done")).required();
    parser.addOption("--author", arguments->author,
                     trUtf8(L"Who did it (default: $QRV_AUTHOR, else user@host)"));
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print the commit as JSON"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
