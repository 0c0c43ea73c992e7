#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/text/ShownCommitText.h>
#include <engine/base/Translation.h>
#include <engine/operations/Show.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace qrv::cli {

namespace {

struct Arguments {
    std::string object = "HEAD";
    bool asJson = false;
};

Expected<void> run(const Arguments& arguments, Output& output) {
    ContentsSink contents;
    if (!arguments.asJson)
        contents = [&output](std::string_view part) { output.write(part); };
    const Expected<std::optional<ShownCommit>> shown =
        show(".", arguments.object, contents, person());
    if (!shown)
        return shown.error();
    if (*shown && arguments.asJson)
        writeJson(shownCommitDocument(**shown), output);
    else if (*shown)
        output.write(shownCommitText(**shown));
    else if (arguments.asJson)
        return ErrorMessage{tr(L"--json is for a commit; a file is printed as it is")};
    return {};
}

}  // namespace

Action declareShow(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser.addOption("COMMIT", arguments->object,
                     trUtf8(L"The commit to show (default: the current branch's); with \":\" and "
                            L"a file's path behind it, the file's contents are printed"));
    parser.addFlag("--json", arguments->asJson,
                   trUtf8(L"Print an object with \"number\", \"hash\", \"parents\", \"author\", "
                          L"\"message\", \"time\", \"references\" and \"changes\", the latter as "
                          L"qrv diff --json prints them"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
