#include <CLI/CLI.hpp>
#include <cli/Message.h>
#include <cli/Output.h>
#include <cli/Repository.h>
#include <cli/commands/Commands.h>
#include <common/json/Value.h>
#include <common/json/Writer.h>
#include <common/state/State.h>
#include <common/worktree/CollectFiles.h>
#include <common/worktree/File.h>
#include <common/worktree/FileChange.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace qrv_cli {

namespace {

namespace json = jsonlib::json;

struct Status {
    OdString root;
    std::size_t fileCount = 0;
    const common::State& state;
};

/// The state's reader accepts only changes that have a name.
OdString nameOf(common::FileChange change) {
    return *common::toString(change);
}

json::Array toJson(const std::vector<common::StagedFile>& stagedFiles) {
    json::Array array;
    for (const common::StagedFile& file : stagedFiles) {
        json::Object object;
        object[L"path"] = file.path.toWide();
        object[L"change"] = nameOf(file.change).toWide();
        array.emplace_back(std::move(object));
    }
    return array;
}

json::Array toJson(const std::vector<common::ConflictData>& conflicts) {
    json::Array array;
    for (const common::ConflictData& conflict : conflicts) {
        json::Object object;
        object[L"path"] = conflict.path.toWide();
        object[L"local"] = nameOf(conflict.localType).toWide();
        object[L"remote"] = nameOf(conflict.remoteType).toWide();
        array.emplace_back(std::move(object));
    }
    return array;
}

std::string jsonText(const Status& status) {
    json::Object object;
    object[L"root"] = status.root.toWide();
    object[L"branch"] = status.state.head.reference.toWide();
    object[L"files"] = static_cast<std::uint64_t>(status.fileCount);
    object[L"staged"] = toJson(status.state.stagedFiles);
    object[L"conflicts"] = toJson(status.state.conflicts);
    return OdString(json::write(std::move(object))).toNarrow() + "\n";
}

OdString stagedLines(const std::vector<common::StagedFile>& stagedFiles) {
    OdString lines;
    for (const common::StagedFile& file : stagedFiles)
        lines += OdString::format(L"  %ls: %ls\n", nameOf(file.change), printable(file.path));
    return lines;
}

OdString conflictLines(const std::vector<common::ConflictData>& conflicts) {
    OdString lines;
    for (const common::ConflictData& conflict : conflicts)
        lines +=
            OdString::format(L"  %ls (%ls here, %ls on the server)\n", printable(conflict.path),
                             nameOf(conflict.localType), nameOf(conflict.remoteType));
    return lines;
}

std::string plainText(const Status& status) {
    const common::State& state = status.state;
    OdString text =
        OdString::format(L"Repository: %ls\nBranch: %ls\nFiles: %i\nStaged: %i\nConflicts: %i\n",
                         printable(status.root), printable(state.head.reference), status.fileCount,
                         state.stagedFiles.size(), state.conflicts.size());
    if (!state.stagedFiles.empty())
        text += L"\nStaged for the next commit:\n" + stagedLines(state.stagedFiles);
    if (!state.conflicts.empty())
        text += L"\nConflicts to resolve:\n" + conflictLines(state.conflicts);
    return text.toNarrow();
}

Expected<void> showStatus(const std::string& folder, bool asJson, Output& output) {
    const Expected<common::RootPath> root = findRepository(folder);
    if (!root)
        return root.error();
    const Host host;
    // Before the scan, which makes a missing ignore file: a repository without a readable state is
    // left as it is.
    const Expected<std::shared_ptr<common::Cache>> cache = openState(*root, host);
    if (!cache)
        return cache.error();
    const Expected<std::vector<common::File>> files = common::collectRepoFiles(printMessage, *root);
    if (!files)
        return files.error();
    const Status status = {root->path(), files->size(), (*cache)->read()};
    output.write(asJson ? jsonText(status) : plainText(status));
    return {};
}

}  // namespace

Action declareStatus(CLI::App& parser) {
    const auto folder = std::make_shared<std::string>(".");
    const auto asJson = std::make_shared<bool>(false);
    parser.add_option("DIR", *folder, "A folder in the repository (default: the current one)");
    parser.add_flag("--json", *asJson, "Print the status as a JSON object");
    return [folder, asJson](Output& output) { return showStatus(*folder, *asJson, output); };
}

}  // namespace qrv_cli
