#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/terminal/Colour.h>
#include <cli/terminal/Message.h>
#include <cli/text/ChangeText.h>
#include <cli/text/CommitText.h>
#include <cli/text/ConflictText.h>
#include <cli/text/Names.h>
#include <common/worktree/RepoFileExplorer.h>
#include <engine/base/Printable.h>
#include <engine/base/SortedLookup.h>
#include <engine/base/Translation.h>
#include <engine/history/ShortForms.h>
#include <engine/journal/OpenTree.h>
#include <engine/worktree/Staging.h>
#include <engine/worktree/WorkingChanges.h>
#include <engine/worktree/WorkingTree.h>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qrv::cli {

namespace {

using common::StagedFile;

struct Arguments {
    std::string folder = ".";
    bool namesOnly = false;
    bool endWithNul = false;
    bool asJson = false;
};

/// What the texts are made of.
struct Status {
    OdString root;
    OdString branch;
    /// Of HEAD; nothing before the first commit.
    std::optional<CommitEntry> commit;
    /// The commit that is being merged, or empty.
    OdString merging;
    std::size_t fileCount = 0;
    /// A staged file that was put back as it was is not staged any more.
    std::vector<StagedFile> staged;
    std::vector<StagedFile> unstaged;
    std::map<OdString, OdString> renames;
    std::vector<common::ConflictData> conflicts;
    std::vector<Unseen> unseen;
};

bool contains(const std::vector<StagedFile>& files, const OdString& path) {
    return findSorted(files, [&path](const StagedFile& file) { return file.path <=> path; }) !=
           nullptr;
}

bool isInConflict(const std::vector<common::ConflictData>& conflicts, const OdString& path) {
    return std::any_of(conflicts.begin(), conflicts.end(),
                       [&path](const auto& conflict) { return conflict.path == path; });
}

std::vector<StagedFile> unstagedChanges(const Status& status, const WorkingChanges& changes) {
    std::vector<StagedFile> files;
    for (const common::StatusRef& change : changes.files.changes) {
        const OdString path = change.path();
        if (!contains(status.staged, path) && !isInConflict(status.conflicts, path))
            files.emplace_back(path, change.status());
    }
    return files;
}

Status statusOf(WorkingTree& workingTree, const WorkingChanges& changes) {
    Status status;
    status.root = workingTree.root().path();
    status.branch = workingTree.repository().branch();
    const OdString head = workingTree.repository().headCommit();
    if (!head.isEmpty())
        status.commit = workingTree.repository().history().commit(head);
    status.merging = workingTree.repository().history().note(mergeNote);
    status.fileCount = changes.presentCount();
    status.staged = stagedChanges(workingTree.repository().stateWithoutIndex(), changes);
    status.conflicts = workingTree.repository().stateWithoutIndex().conflicts;
    status.unstaged = unstagedChanges(status, changes);
    status.renames = changes.renames;
    status.unseen = changes.unseen;
    return status;
}

jsonlib::json::Array arrayOf(const std::vector<Unseen>& unseen) {
    jsonlib::json::Array array;
    for (const Unseen& each : unseen) {
        jsonlib::json::Object object;
        object[L"path"] = each.path.toWide();
        object[L"cause"] = OdString(each.cause.message().c_str()).toWide();
        array.emplace_back(std::move(object));
    }
    return array;
}

jsonlib::json::Value documentOf(const Status& status) {
    jsonlib::json::Array renames;
    for (const auto& [path, previous] : status.renames) {
        jsonlib::json::Object rename;
        rename[L"path"] = path.toWide();
        rename[L"previousPath"] = previous.toWide();
        renames.emplace_back(std::move(rename));
    }
    jsonlib::json::Object object;
    object[L"root"] = status.root.toWide();
    object[L"branch"] = status.branch.toWide();
    if (status.commit)
        object[L"commit"] = toJson(*status.commit);
    if (!status.merging.isEmpty())
        object[L"merging"] = status.merging.toWide();
    object[L"files"] = static_cast<std::uint64_t>(status.fileCount);
    object[L"staged"] = toJson(status.staged);
    object[L"unstaged"] = toJson(status.unstaged);
    object[L"renames"] = std::move(renames);
    object[L"conflicts"] = toJson(status.conflicts);
    if (!status.unseen.empty())
        object[L"unseen"] = arrayOf(status.unseen);
    return object;
}

OdString lines(const std::vector<StagedFile>& files) {
    OdString text;
    for (const StagedFile& file : files)
        text += changeLine(file.change, file.path);
    return text;
}

OdString renameLines(const std::map<OdString, OdString>& renames) {
    OdString text;
    for (const auto& [path, previous] : renames)
        text += OdString::format(L"  %ls -> %ls\n", printable(previous), printable(path));
    return text;
}

OdString unseenLines(const std::vector<Unseen>& unseen) {
    OdString text;
    for (const Unseen& each : unseen)
        text += L"  " + textOf(each) + L"\n";
    return text;
}

OdString heading(const Status& status) {
    OdString text =
        OdString::format(tr(L"Branch '%ls'"), coloured(Colour::cyan, printable(status.branch)));
    if (status.commit)
        text += OdString::format(tr(L", commit %i: %ls\n"), status.commit->number,
                                 printable(titleOf(*status.commit)));
    else
        text += tr(L", no commit yet\n");
    if (!status.merging.isEmpty())
        text += OdString::format(tr(L"Merging %ls (qrv commit ends it, qrv merge --abort takes it "
                                    L"back)\n"),
                                 shortHash(status.merging));
    return text;
}

OdString section(const OdString& title, const OdString& body) {
    return body.isEmpty() ? OdString() : L"\n" + coloured(Colour::bold, title) + L"\n" + body;
}

std::string plainText(const Status& status) {
    OdString text = heading(status);
    text += section(tr(L"Staged for the next commit:"), lines(status.staged));
    text += section(tr(L"Conflicts (qrv resolve PATH --mine, --theirs or --merged):"),
                    conflictLines(status.conflicts));
    text += section(tr(L"Changed, not staged (qrv add PATH):"), lines(status.unstaged));
    text += section(tr(L"Renamed:"), renameLines(status.renames));
    text += section(tr(L"Cannot be looked at, so that nothing is known of them:"),
                    unseenLines(status.unseen));
    if (status.staged.empty() && status.conflicts.empty() && status.unstaged.empty() &&
        status.unseen.empty())
        text += OdString::format(tr(L"Nothing has changed; files: %i\n"), status.fileCount);
    return text.toNarrow();
}

/// All paths that the plain text names, each once and sorted.
void writeNames(const Status& status, std::string_view end, Output& output) {
    std::set<OdString> names;
    for (const auto* files : {&status.staged, &status.unstaged}) {
        for (const StagedFile& file : *files)
            names.insert(file.path);
    }
    for (const common::ConflictData& conflict : status.conflicts)
        names.insert(conflict.path);
    for (const OdString& name : names) {
        output.write(nameForOutput(name));
        output.write(end);
    }
}

void write(const Status& status, const Arguments& arguments, Output& output) {
    if (arguments.asJson)
        writeJson(documentOf(status), output);
    else if (arguments.namesOnly)
        writeNames(status, arguments.endWithNul ? std::string_view("\0", 1) : "\n", output);
    else
        output.write(plainText(status));
}

ErrorMessage notAllSeen(const std::vector<Unseen>& unseen) {
    OdString text = tr(L"Not everything can be looked at:");
    for (const Unseen& each : unseen)
        text += L"\n  " + textOf(each);
    return {text};
}

Expected<void> showStatus(const Arguments& arguments, Output& output) {
    Expected<std::unique_ptr<WorkingTree>> workingTree =
        openTree(arguments.folder, Repository::Use::look, person(), WorkingTree::Scan::ahead);
    if (!workingTree)
        return workingTree.error();
    const Expected<WorkingChanges> changes = findVisibleChanges(**workingTree);
    if (!changes)
        return changes.error();
    const Status status = statusOf(**workingTree, *changes);
    (*workingTree)->keepBaseline(changes->baseline);
    // What was found by reading is only remembered to be quicker next time.
    if (const Expected<void> closed = (*workingTree)->close(); !closed)
        printMessage(closed.error().message);
    // Who reads what is printed may take long, and nobody is to wait for the lock meanwhile.
    workingTree->reset();
    write(status, arguments, output);
    return changes->unseen.empty() ? Expected<void>() : notAllSeen(changes->unseen);
}

}  // namespace

Action declareStatus(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser.addOption("DIR", arguments->folder,
                     trUtf8(L"A folder in the repository (default: the current one)"));
    const Argument names = parser.addFlag("--names", arguments->namesOnly,
                                          trUtf8(L"Print only the paths of what has changed"));
    parser
        .addFlag("-0", arguments->endWithNul, trUtf8(L"End each path with a NUL, not a line feed"))
        .needs(names);
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print the status as a JSON object"))
        .excludes(names);
    return [arguments](Output& output) { return showStatus(*arguments, output); };
}

}  // namespace qrv::cli
