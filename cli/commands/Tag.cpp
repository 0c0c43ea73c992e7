#include <cli/commands/Commands.h>
#include <cli/commands/ReferenceCommand.h>
#include <cli/shell/ArgumentParser.h>
#include <engine/base/Translation.h>

#include <memory>

namespace qrv::cli {

Action declareTag(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<ReferenceArguments>();
    const Argument name = parser.addOption("NAME", arguments->name,
                                           trUtf8(L"The tag to make (default: list the tags)"));
    parser
        .addOption("COMMIT", arguments->commit,
                   trUtf8(L"The commit that it names (default: the current branch's)"))
        .needs(name);
    parser.addOption("--delete", arguments->deleted, trUtf8(L"Delete the tag NAME"))
        .placeholder("NAME")
        .excludes(name);
    const Argument names =
        parser.addFlag("--names", arguments->namesOnly, trUtf8(L"List only the names"))
            .excludes(name);
    parser
        .addFlag("--json", arguments->asJson,
                 trUtf8(L"Print an array of objects with \"name\" and \"commit\"; of a tag made "
                        L"or deleted its object alone"))
        .excludes(names);
    return [arguments](Output& output) {
        return runReferenceCommand(common::RefType::Tag, *arguments, output);
    };
}

}  // namespace qrv::cli
