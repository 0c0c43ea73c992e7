#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/terminal/Colour.h>
#include <cli/terminal/Message.h>
#include <cli/text/DifferenceText.h>
#include <cli/text/Names.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/diff/Contents.h>
#include <engine/diff/Differences.h>
#include <engine/diff/Patch.h>
#include <engine/history/CommitName.h>
#include <engine/journal/OpenTree.h>
#include <engine/paths/PathParts.h>
#include <engine/worktree/PathArgument.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>
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

Expected<Tree> treeOfCommit(WorkingTree& workingTree, const std::string& name) {
    const Expected<OdString> hash =
        findCommit(workingTree.repository().history(), OdString::fromNarrow(name),
                   workingTree.repository().branch());
    if (!hash)
        return hash.error();
    return workingTree.repository().history().tree(*hash);
}

template <class After>
Expected<std::vector<OdString>> chosenPaths(const WorkingTree& workingTree,
                                            const std::vector<std::string>& arguments,
                                            const Tree& before, const After& after) {
    std::vector<OdString> chosen;
    for (const std::string& argument : arguments) {
        const Expected<OdString> path = pathInRepository(workingTree.root(), argument);
        if (!path)
            return path.error();
        const auto isThere = [&path](const auto& file) { return isChosen(file.first, {*path}); };
        if (std::none_of(before.begin(), before.end(), isThere) &&
            std::none_of(after.begin(), after.end(), isThere))
            return ErrorMessage{OdString::format(tr(L"'%ls' is on neither side of the comparison"),
                                                 printable(OdString::fromNarrow(argument)))};
        chosen.push_back(*path);
    }
    return chosen;
}

template <class After>
Expected<std::vector<Difference>> chosenDifferences(const WorkingTree& workingTree,
                                                    const Arguments& arguments, const Tree& before,
                                                    const After& after) {
    const Expected<std::vector<OdString>> chosen =
        chosenPaths(workingTree, arguments.paths, before, after);
    if (!chosen)
        return chosen.error();
    std::vector<Difference> differences = differencesBetween(before, after);
    if (!chosen->empty())
        std::erase_if(differences, [&chosen](const Difference& difference) {
            return !isChosen(difference.path, *chosen) && !isChosen(difference.oldPath(), *chosen);
        });
    return differences;
}

Expected<std::vector<Difference>> findDifferences(WorkingTree& workingTree,
                                                  const Arguments& arguments) {
    const Expected<Tree> before = arguments.before ? treeOfCommit(workingTree, *arguments.before)
                                                   : workingTree.repository().headFiles();
    if (!before)
        return before.error();
    if (arguments.after) {
        const Expected<Tree> after = treeOfCommit(workingTree, *arguments.after);
        if (!after)
            return after.error();
        return chosenDifferences(workingTree, arguments, *before, *after);
    }
    const Expected<WorkingChanges> changes = findChanges(workingTree);
    if (!changes)
        return changes.error();
    const Expected<WorkingFiles> after = readWorkingFiles(workingTree, *changes);
    if (!after)
        return after.error();
    return chosenDifferences(workingTree, arguments, *before, *after);
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

/// An absent side is an empty text.
Expected<std::optional<std::string>> readSide(WorkingTree& workingTree, const OdString& path,
                                              const std::optional<TreeFile>& version) {
    if (!version)
        return std::optional(std::string());
    return readText(workingTree, path, *version);
}

Expected<void> writePatch(WorkingTree& workingTree, const Difference& difference,
                          const PatchSink& sink) {
    sink(PatchLine::heading, differenceText(difference).toNarrow());
    if (!difference.hasOtherContents()) {
        writePatchHeading(difference, sink);
        return {};
    }
    const auto before = readSide(workingTree, difference.oldPath(), difference.before);
    if (!before)
        return before.error();
    const auto after = readSide(workingTree, difference.path, difference.after);
    if (!after)
        return after.error();
    if (*before && *after) {
        writePatchHeading(difference, sink);
        writePatchLines(difference, **before, **after, sink);
    } else {
        writeBinaryRemark(difference, sink);
    }
    return {};
}

Expected<void> write(WorkingTree& workingTree, const std::vector<Difference>& differences,
                     const Arguments& arguments, Output& output) {
    if (arguments.asJson) {
        writeJson(toJson(differences), output);
        return {};
    }
    if (arguments.namesOnly) {
        writeNames(differences, arguments.endWithNul ? std::string_view("\0", 1) : "\n", output);
        return {};
    }
    const PatchSink sink = [&output](PatchLine kind, std::string_view line) {
        writeLine(kind, line, output);
    };
    for (const Difference& difference : differences) {
        if (const Expected<void> done = writePatch(workingTree, difference, sink); !done)
            return done.error();
    }
    return {};
}

Expected<void> run(const Arguments& arguments, Output& output) {
    const Expected<std::unique_ptr<WorkingTree>> workingTree =
        openTree(".", Repository::Use::look, person());
    if (!workingTree)
        return workingTree.error();
    const Expected<std::vector<Difference>> differences = findDifferences(**workingTree, arguments);
    if (!differences)
        return differences.error();
    if (const Expected<void> done = write(**workingTree, *differences, arguments, output); !done)
        return done.error();
    // What was found by reading is only remembered to be quicker next time.
    if (const Expected<void> closed = (*workingTree)->close(); !closed)
        printMessage(closed.error().message);
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
