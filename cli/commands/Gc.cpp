#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/shell/Output.h>
#include <cli/shell/PersonAtTerminal.h>
#include <cli/terminal/Message.h>
#include <cli/terminal/Progress.h>
#include <common/json/Value.h>
#include <engine/base/Translation.h>
#include <engine/operations/CollectGarbage.h>

#include <memory>
#include <string>
#include <utility>

namespace qrv::cli {

namespace {

struct Arguments {
    bool onlyLook = false;
    bool asJson = false;
};

jsonlib::json::Object toJson(const Amount& amount) {
    jsonlib::json::Object object;
    object[L"count"] = amount.count;
    object[L"bytes"] = amount.sizeBytes;
    return object;
}

jsonlib::json::Value documentOf(const Collected& collected, const Arguments& arguments) {
    jsonlib::json::Array problems;
    for (const OdString& problem : collected.problems)
        problems.emplace_back(problem.toWide());
    jsonlib::json::Object object;
    object[L"dryRun"] = arguments.onlyLook;
    object[L"packed"] = toJson(collected.packed);
    object[L"droppedObjects"] = toJson(collected.droppedObjects);
    object[L"droppedDrawingVersions"] = toJson(collected.droppedDrawingVersions);
    object[L"leftovers"] = toJson(collected.leftovers);
    object[L"bytesBefore"] = collected.sizeBefore;
    if (!arguments.onlyLook)
        object[L"bytesAfter"] = collected.sizeAfter;
    object[L"problems"] = std::move(problems);
    return object;
}

OdString line(const OdString& pattern, const Amount& amount) {
    return OdString::format(pattern, amount.count, sizeText(amount.sizeBytes));
}

std::string plainText(const Collected& collected) {
    OdString text = line(tr(L"Objects packed: %i (%ls)\n"), collected.packed);
    text += line(tr(L"Objects dropped: %i (%ls)\n"), collected.droppedObjects);
    text += line(tr(L"Drawing versions dropped: %i (%ls)\n"), collected.droppedDrawingVersions);
    text += line(tr(L"Leftovers removed: %i (%ls)\n"), collected.leftovers);
    text += OdString::format(tr(L"Stored: %ls before, %ls now\n"), sizeText(collected.sizeBefore),
                             sizeText(collected.sizeAfter));
    return text.toNarrow();
}

std::string plainTextOfLook(const Collected& collected) {
    OdString text = line(tr(L"Objects to pack: %i (%ls)\n"), collected.packed);
    text += line(tr(L"Objects to drop: %i (%ls)\n"), collected.droppedObjects);
    text += line(tr(L"Drawing versions to drop: %i (%ls)\n"), collected.droppedDrawingVersions);
    text += line(tr(L"Leftovers to remove: %i (%ls)\n"), collected.leftovers);
    text += OdString::format(tr(L"Stored: %ls\n"), sizeText(collected.sizeBefore));
    return text.toNarrow();
}

void print(const Collected& collected, const Arguments& arguments, Output& output) {
    if (arguments.asJson)
        return writeJson(documentOf(collected, arguments), output);
    output.write(arguments.onlyLook ? plainTextOfLook(collected) : plainText(collected));
    for (const OdString& problem : collected.problems)
        printMessage(problem);
}

Expected<void> run(const Arguments& arguments, Output& output) {
    const Expected<Collected> collected =
        collectGarbage(".", {.onlyLook = arguments.onlyLook}, person());
    if (!collected)
        return collected.error();
    print(*collected, arguments, output);
    if (collected->problems.empty())
        return {};
    return ErrorMessage{
        OdString::format(tr(L"Not all could be collected; problems: %i (qrv verify tells more)"),
                         collected->problems.size())};
}

}  // namespace

Action declareGc(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    parser.addFlag("--dry-run,-n", arguments->onlyLook, trUtf8(L"Only tell what would be done"));
    parser.addFlag("--json", arguments->asJson, trUtf8(L"Print what was done as a JSON object"));
    return [arguments](Output& output) { return run(*arguments, output); };
}

}  // namespace qrv::cli
