#include <cli/commands/Commands.h>
#include <cli/commands/ReferenceList.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/text/CommitText.h>
#include <cli/text/DifferenceText.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/diff/Differences.h>
#include <engine/history/CommitName.h>
#include <engine/history/ShortForms.h>
#include <engine/journal/OpenTree.h>
#include <engine/storage/ReadToEnd.h>
#include <engine/storage/StorageMessages.h>
#include <engine/worktree/PathArgument.h>
#include <engine/worktree/WorkingTree.h>

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qrv::cli {

namespace {

struct Arguments {
    std::string object = "HEAD";
    bool asJson = false;
};

Expected<OdString> hashOf(WorkingTree& workingTree, const std::string& name) {
    return findCommit(workingTree.repository().history(), OdString::fromNarrow(name),
                      workingTree.repository().branch());
}

std::vector<Difference> changesOf(History& history, const CommitEntry& commit) {
    const OdString parent = commit.parents.empty() ? OdString() : commit.parents.front();
    return differencesBetween(history.tree(parent), history.tree(commit.hash),
                              renamesOf(history.deltas(commit.hash)));
}

OdString indented(const OdString& message) {
    OdString text;
    for (int begin = 0; begin <= message.getLength();) {
        const int feed = message.find(L'\n', begin);
        const int end = feed < 0 ? message.getLength() : feed;
        const OdString line = printable(message.mid(begin, end - begin));
        text += line.isEmpty() ? OdString(L"\n") : L"    " + line + L"\n";
        begin = end + 1;
    }
    return text;
}

OdString headingOf(History& history, const CommitEntry& commit) {
    OdString text = OdString::format(tr(L"Commit %i%ls\n"), commit.number,
                                     ReferenceList(history.references()).textAt(commit.hash));
    text += OdString::format(tr(L"Hash: %ls\n"), commit.hash);
    for (const OdString& parent : commit.parents)
        text += OdString::format(tr(L"Builds on: %ls\n"), parent);
    text += OdString::format(tr(L"Author: %ls\n"), printable(commit.author));
    text += OdString::format(tr(L"Time: %ls\n"), timeText(commit.timeSeconds));
    return text + L"\n" + indented(commit.message);
}

std::string plainText(History& history, const CommitEntry& commit,
                      const std::vector<Difference>& changes) {
    OdString text = headingOf(history, commit);
    if (!changes.empty())
        text += L"\n";
    for (const Difference& change : changes)
        text += differenceText(change) + sizeText(change) + L"\n";
    return text.toNarrow();
}

Expected<void> showCommit(WorkingTree& workingTree, const Arguments& arguments, Output& output) {
    const Expected<OdString> hash = hashOf(workingTree, arguments.object);
    if (!hash)
        return hash.error();
    History& history = workingTree.repository().history();
    const CommitEntry commit = history.commit(*hash).value();
    const std::vector<Difference> changes = changesOf(history, commit);
    if (arguments.asJson) {
        jsonlib::json::Object object = toJson(commit);
        object[L"references"] = ReferenceList(history.references()).documentAt(commit.hash);
        object[L"changes"] = toJson(changes);
        writeJson(std::move(object), output);
    } else {
        output.write(plainText(history, commit, changes));
    }
    return {};
}

Expected<void> writeVersion(WorkingTree& workingTree, const OdString& url, Output& output) {
    const Expected<std::unique_ptr<VersionReader>> reader =
        workingTree.repository().storages().ofUrl(url).open(workingTree.root(), url);
    if (!reader)
        return reader.error();
    if (*reader == nullptr)
        return notKept(url);
    CopyBuffer buffer((*reader)->sizeBytes());
    return readToEnd(**reader, buffer, [&](std::span<const char> bytes) {
        output.write(std::string_view(bytes.data(), bytes.size()));
        return Expected<void>();
    });
}

Expected<void> showFile(WorkingTree& workingTree, const std::string& commit,
                        const std::string& argument, Output& output) {
    const Expected<OdString> hash = hashOf(workingTree, commit);
    if (!hash)
        return hash.error();
    const Expected<OdString> path = pathInRepository(workingTree.root(), argument);
    if (!path)
        return path.error();
    const Tree tree = workingTree.repository().history().tree(*hash);
    const auto file = tree.find(*path);
    if (file == tree.end())
        return ErrorMessage{OdString::format(tr(L"'%ls' is not in the commit"),
                                             printable(OdString::fromNarrow(argument)))};
    return writeVersion(workingTree, file->second.contents, output);
}

Expected<void> run(const Arguments& arguments, Output& output) {
    const Expected<std::unique_ptr<WorkingTree>> workingTree =
        openTree(".", Repository::Use::look, person());
    if (!workingTree)
        return workingTree.error();
    const std::string& object = arguments.object;
    // The name of a branch may have a colon in it, but then it is there.
    const std::size_t colon = object.find(':');
    if (colon == std::string::npos || hashOf(**workingTree, object))
        return showCommit(**workingTree, arguments, output);
    if (arguments.asJson)
        return ErrorMessage{tr(L"--json is for a commit; a file is printed as it is")};
    return showFile(**workingTree, object.substr(0, colon), object.substr(colon + 1), output);
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
