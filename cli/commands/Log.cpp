#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/text/CommitText.h>
#include <cli/text/ReferenceList.h>
#include <common/history/HistoryItem.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/history/ShortForms.h>
#include <engine/operations/Log.h>
#include <platform/kernel/OdTimeStamp.h>

#include <QString>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace qrv::cli {

namespace {

constexpr std::int64_t millisecondsPerSecond = 1000;

struct Arguments {
    std::optional<std::string> commit;
    std::optional<std::size_t> count;
    std::optional<std::string> path;
    bool asJson = false;
};

/// For the parser: empty, or what is wrong with the number.
std::string refusalOfCount(const std::string& count) {
    const bool hasOnlyDigits = count.find_first_not_of("0123456789") == std::string::npos;
    if (hasOnlyDigits && count.find_first_not_of('0') != std::string::npos)
        return {};
    return OdString::format(tr(L"'%ls' is no number above 0"),
                            printable(OdString::fromNarrow(count)))
        .toNarrow();
}

/// The units that the library made the text from.
OdString toText(const QString& text) {
    return std::wstring(text.utf16(), text.utf16() + text.size());
}

common::HistoryItem itemOf(const CommitEntry& commit) {
    OdTimeStamp time;
    time.setPackedValue(commit.timeSeconds * millisecondsPerSecond);
    return {time, commit.author, titleOf(commit), commit.message, static_cast<int>(commit.number)};
}

std::string rowOf(const CommitEntry& commit, const ReferenceList& references) {
    const common::HistoryItem item = itemOf(commit);
    return OdString::format(L"%i  %ls  %ls%ls\n    %ls\n", commit.number, shortHash(commit.hash),
                            printable(toText(item.getName())), references.textAt(commit.hash),
                            printable(toText(item.getInfo())))
        .toNarrow();
}

void writeDocument(const std::vector<CommitEntry>& commits, const ReferenceList& references,
                   Output& output) {
    jsonlib::json::Array array;
    for (const CommitEntry& commit : commits) {
        jsonlib::json::Object object = toJson(commit);
        object[L"references"] = references.documentAt(commit.hash);
        array.emplace_back(std::move(object));
    }
    writeJson(std::move(array), output);
}

Expected<void> run(const Arguments& arguments, Output& output) {
    LogRequest request = {std::nullopt, arguments.count, arguments.path};
    if (arguments.commit)
        request.commit = OdString::fromNarrow(*arguments.commit);
    Expected<Log> found = log(".", request, person());
    if (!found)
        return found.error();
    const ReferenceList references(std::move(found->references));
    if (arguments.asJson) {
        writeDocument(found->commits, references, output);
        return {};
    }
    for (const CommitEntry& commit : found->commits)
        output.write(rowOf(commit, references));
    if (found->commits.empty())
        output.write(OdString::format(tr(L"There is no commit yet on the branch '%ls'\n"),
                                      printable(found->branch))
                         .toNarrow());
    return {};
}

}  // namespace

Action declareLog(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser.addOption("COMMIT", arguments->commit,
                     trUtf8(L"The newest one to list (default: the current branch's)"));
    parser.addOption("-n", arguments->count, trUtf8(L"List at most N commits"))
        .placeholder("N")
        .check(refusalOfCount, "POSITIVE");
    parser
        .addOption("--path", arguments->path,
                   trUtf8(L"Only commits that changed the file, also under former names, or "
                          L"something in the folder"))
        .placeholder("PATH");
    parser.addFlag("--json", arguments->asJson,
                   trUtf8(L"Print an array of objects with \"number\", \"hash\", \"parents\", "
                          L"\"author\", \"message\", \"time\" and \"references\""));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
