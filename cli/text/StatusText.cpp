#include <cli/terminal/Colour.h>
#include <cli/text/ChangeText.h>
#include <cli/text/CommitText.h>
#include <cli/text/ConflictText.h>
#include <cli/text/StatusText.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/history/ShortForms.h>

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace qrv::cli {

namespace {

using common::StagedFile;

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

}  // namespace

jsonlib::json::Value statusDocument(const Status& status) {
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

std::string statusText(const Status& status) {
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

}  // namespace qrv::cli
