#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/terminal/Colour.h>
#include <cli/text/DifferenceText.h>
#include <cli/text/Names.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/operations/Diff.h>
#include <sys/Terminal.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qrv::cli {

namespace {

struct Arguments {
    std::optional<std::string> before;
    std::optional<std::string> after;
    std::vector<std::string> paths;
    bool namesOnly = false;
    bool endWithNul = false;
    bool asJson = false;
};

DiffRequest requestOf(const Arguments& arguments) {
    const auto textOf = [](const std::optional<std::string>& argument) {
        return argument ? std::optional(OdString::fromNarrow(*argument)) : std::nullopt;
    };
    return {.before = textOf(arguments.before),
            .after = textOf(arguments.after),
            .paths = arguments.paths};
}

void writeNames(const std::vector<Difference>& differences, std::string_view end, Output& output) {
    for (const Difference& difference : differences) {
        output.write(nameForOutput(difference.path));
        output.write(end);
    }
}

std::optional<Colour> colourOf(PatchLine kind) {
    switch (kind) {
        case PatchLine::heading:
            return Colour::bold;
        case PatchLine::position:
            return Colour::cyan;
        case PatchLine::removed:
            return Colour::red;
        case PatchLine::added:
            return Colour::green;
        case PatchLine::context:
        case PatchLine::remark:
            break;
    }
    return std::nullopt;
}

/// What the line may do to a terminal is shown instead, but for tabs.
std::string printableLine(std::string_view line) {
    std::string text;
    for (std::size_t begin = 0; begin <= line.size();) {
        const std::size_t end = std::min(line.find('\t', begin), line.size());
        text += printable(OdString::fromNarrow(line.substr(begin, end - begin))).toNarrow();
        text += end < line.size() ? "\t" : "";
        begin = end + 1;
    }
    return text;
}

/// Elsewhere lines of patches keep their own bytes, so that the patch can be applied.
void writeLine(PatchLine kind, std::string_view line, Output& output) {
    const std::optional<Colour> colour = colourOf(kind);
    const std::string text =
        sys::isTerminal(sys::Stream::output) ? printableLine(line) : std::string(line);
    output.write(colour ? coloured(*colour, text) : text);
    output.write("\n");
}

Expected<void> writePatches(const DiffRequest& request, Output& output) {
    const PatchSink onLine = [&output](PatchLine kind, std::string_view line) {
        writeLine(kind, line, output);
    };
    const DifferenceSink onFile = [&onLine](const Difference& difference) {
        onLine(PatchLine::heading, differenceText(difference).toNarrow());
    };
    return diffLines(".", request, onFile, onLine, person());
}

Expected<void> run(const Arguments& arguments, Output& output) {
    const DiffRequest request = requestOf(arguments);
    if (!arguments.asJson && !arguments.namesOnly)
        return writePatches(request, output);
    const Expected<std::vector<Difference>> differences = diff(".", request, person());
    if (!differences)
        return differences.error();
    if (arguments.asJson)
        writeJson(toJson(*differences), output);
    else
        writeNames(*differences, arguments.endWithNul ? std::string_view("\0", 1) : "\n", output);
    return {};
}

}  // namespace

Action declareDiff(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser.addOption("COMMIT", arguments->before,
                     trUtf8(L"What to compare with (default: the current branch's commit)"));
    parser.addOption("OTHER", arguments->after,
                     trUtf8(L"The commit to compare (default: the working files)"));
    parser.addOption("--path", arguments->paths, trUtf8(L"Only these files and folders"))
        .placeholder("PATH");
    const Argument names =
        parser.addFlag("--names", arguments->namesOnly, trUtf8(L"Print only the paths"));
    parser
        .addFlag("-0", arguments->endWithNul, trUtf8(L"End each path with a NUL, not a line feed"))
        .needs(names);
    parser
        .addFlag("--json", arguments->asJson,
                 trUtf8(L"Print an array of objects with \"path\", \"change\" (\"added\", "
                        L"\"modified\", \"removed\" or \"renamed\"), \"previousPath\" of a "
                        L"renamed file, and of each side the size in bytes and the digest: "
                        L"\"sizeBefore\", \"digestBefore\", \"sizeAfter\", \"digestAfter\""))
        .excludes(names);
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
