#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/terminal/Message.h>
#include <common/json/Value.h>
#include <engine/base/Translation.h>
#include <engine/operations/Verify.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace qrv::cli {

namespace {

jsonlib::json::Array toJson(const std::vector<OdString>& texts) {
    jsonlib::json::Array array;
    for (const OdString& text : texts)
        array.emplace_back(text.toWide());
    return array;
}

jsonlib::json::Value documentOf(const Verification& found, const OdString& root) {
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

/// Messages of the library have several lines and tabs.
OdString section(const OdString& title, const std::vector<OdString>& texts) {
    if (texts.empty())
        return {};
    OdString section = L"\n" + title + L"\n";
    for (const OdString& text : texts)
        section += L"  " + oneLine(text) + L"\n";
    return section;
}

std::string plainText(const Verification& found) {
    OdString text = OdString::format(tr(L"Commits: %i\n"), found.commits);
    text += OdString::format(tr(L"Objects: %i\n"), found.objects);
    text += OdString::format(tr(L"Packed objects: %i\n"), found.packedObjects);
    text += OdString::format(tr(L"Drawing versions: %i\n"), found.drawingVersions);
    if (found.problems.empty())
        text += tr(L"Everything that was kept is there and whole\n");
    text += section(tr(L"Problems:"), found.problems);
    text += section(tr(L"Notes:"), found.notes);
    return text.toNarrow();
}

Expected<void> run(bool asJson, Output& output) {
    const Expected<Verified> verified = verify(".", person());
    if (!verified)
        return verified.error();
    const Verification& found = verified->found;
    if (asJson)
        writeJson(documentOf(found, verified->root), output);
    else
        output.write(plainText(found));
    if (found.problems.empty())
        return {};
    return ErrorMessage{OdString::format(tr(L"Problems: %i"), found.problems.size())};
}

}  // namespace

Action declareVerify(const ArgumentParser& parser) {
    const auto asJson = std::make_shared<bool>(false);
    parser.addFlag("--json", *asJson, trUtf8(L"Print what was found as a JSON object"));
    return [asJson](Output& output) { return run(*asJson, output); };
}

}  // namespace qrv::cli
