#include <cli/terminal/Message.h>
#include <cli/text/VerificationText.h>
#include <engine/base/Translation.h>

#include <vector>

namespace qrv::cli {

namespace {

jsonlib::json::Array toJson(const std::vector<OdString>& texts) {
    jsonlib::json::Array array;
    for (const OdString& text : texts)
        array.emplace_back(text.toWide());
    return array;
}

/// Messages of the library have several lines and tabs.
OdString section(const OdString& title, const std::vector<OdString>& texts) {
    if (texts.empty())
        return {};
    OdString section = L"\n" + title + L"\n";
    for (const OdString& text : texts)
        section += L"  " + oneLine(text) + L"\n";
    return section;
}

}  // namespace

jsonlib::json::Value verificationDocument(const Verification& found, const OdString& root) {
    jsonlib::json::Object object;
    object[L"root"] = root.toWide();
    object[L"commits"] = found.commits;
    object[L"objects"] = found.objects;
    object[L"packedObjects"] = found.packedObjects;
    object[L"drawingVersions"] = found.drawingVersions;
    object[L"problems"] = toJson(found.problems);
    object[L"notes"] = toJson(found.notes);
    return object;
}

std::string verificationText(const Verification& found, bool isQuick) {
    OdString text = OdString::format(tr(L"Commits: %i\n"), found.commits);
    text += OdString::format(tr(L"Objects: %i\n"), found.objects);
    text += OdString::format(tr(L"Packed objects: %i\n"), found.packedObjects);
    text += OdString::format(tr(L"Drawing versions: %i\n"), found.drawingVersions);
    if (found.problems.empty())
        text += isQuick ? tr(L"Everything that was kept is there; its contents were not read\n")
                        : tr(L"Everything that was kept is there and whole\n");
    text += section(tr(L"Problems:"), found.problems);
    text += section(tr(L"Notes:"), found.notes);
    return text.toNarrow();
}

}  // namespace qrv::cli
