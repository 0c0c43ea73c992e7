#include <cli/terminal/Progress.h>
#include <cli/text/CollectionText.h>
#include <engine/base/Translation.h>

#include <utility>

namespace qrv::cli {

namespace {

jsonlib::json::Object toJson(const Amount& amount) {
    jsonlib::json::Object object;
    object[L"count"] = amount.count;
    object[L"bytes"] = amount.sizeBytes;
    return object;
}

OdString line(const OdString& pattern, const Amount& amount) {
    return OdString::format(pattern, amount.count, sizeText(amount.sizeBytes));
}

std::string plainTextOfLook(const Collected& collected) {
    OdString text = line(tr(L"Objects to pack: %i (%ls)\n"), collected.packed);
    text += line(tr(L"Objects to drop: %i (%ls)\n"), collected.droppedObjects);
    text += line(tr(L"Drawing versions to drop: %i (%ls)\n"), collected.droppedDrawingVersions);
    text += line(tr(L"Leftovers to remove: %i (%ls)\n"), collected.leftovers);
    text += OdString::format(tr(L"Stored: %ls\n"), sizeText(collected.sizeBefore));
    return text.toNarrow();
}

}  // namespace

jsonlib::json::Value collectionDocument(const Collected& collected, bool onlyLook) {
    jsonlib::json::Array problems;
    for (const OdString& problem : collected.problems)
        problems.emplace_back(problem.toWide());
    jsonlib::json::Object object;
    object[L"dryRun"] = onlyLook;
    object[L"packed"] = toJson(collected.packed);
    object[L"droppedObjects"] = toJson(collected.droppedObjects);
    object[L"droppedDrawingVersions"] = toJson(collected.droppedDrawingVersions);
    object[L"leftovers"] = toJson(collected.leftovers);
    object[L"bytesBefore"] = collected.sizeBefore;
    if (!onlyLook)
        object[L"bytesAfter"] = collected.sizeAfter;
    object[L"problems"] = std::move(problems);
    return object;
}

std::string collectionText(const Collected& collected, bool onlyLook) {
    if (onlyLook)
        return plainTextOfLook(collected);
    OdString text = line(tr(L"Objects packed: %i (%ls)\n"), collected.packed);
    text += line(tr(L"Objects dropped: %i (%ls)\n"), collected.droppedObjects);
    text += line(tr(L"Drawing versions dropped: %i (%ls)\n"), collected.droppedDrawingVersions);
    text += line(tr(L"Leftovers removed: %i (%ls)\n"), collected.leftovers);
    text += OdString::format(tr(L"Stored: %ls before, %ls now\n"), sizeText(collected.sizeBefore),
                             sizeText(collected.sizeAfter));
    return text.toNarrow();
}

}  // namespace qrv::cli
