#include <cli/commands/Commands.h>
#include <cli/commands/ReferenceCommand.h>
#include <cli/shell/ArgumentParser.h>
#include <engine/base/Translation.h>

#include <memory>

namespace qrv::cli {

Action declareBranch(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<ReferenceArguments>();
    const Argument name = parser.addOption(
        "NAME", arguments->name, trUtf8(L"The branch to make (default: list the branches)"));
    parser
        .addOption("COMMIT", arguments->commit,
                   trUtf8(L"Where it begins (default: the current branch's commit)"))
        .needs(name);
    const Argument deleted =
        parser.addOption("--delete", arguments->deleted, trUtf8(L"Delete the branch NAME"))
            .placeholder("NAME")
            .excludes(name);
    parser
        .addFlag("--force", arguments->force,
                 trUtf8(L"Delete it also when its commits are in no other branch or tag"))
        .needs(deleted);
    const Argument names =
        parser.addFlag("--names", arguments->namesOnly, trUtf8(L"List only the names"))
            .excludes(name);
    parser
        .addFlag("--json", arguments->asJson,
                 trUtf8(L"Print an array of objects with \"name\", \"commit\" and \"current\"; "
                        L"of a branch made or deleted its object alone"))
        .excludes(names);
    return [arguments](Output& output) {
        return runReferenceCommand(common::RefType::Branch, *arguments, output);
    };
}

}  // namespace qrv::cli
