#include <cli/text/DifferenceText.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>

#include <algorithm>
#include <array>
#include <utility>

namespace qrv::cli {

namespace {

enum class Kind { added, modified, removed, renamed };

constexpr std::array kinds = {Kind::added, Kind::modified, Kind::removed, Kind::renamed};

Kind kindOf(const Difference& difference) {
    if (difference.isRenamed())
        return Kind::renamed;
    if (!difference.before)
        return Kind::added;
    return difference.after ? Kind::modified : Kind::removed;
}

OdString wordOf(Kind kind) {
    switch (kind) {
        case Kind::added:
            return tr(L"added");
        case Kind::modified:
            return tr(L"modified");
        case Kind::removed:
            return tr(L"removed");
        case Kind::renamed:
            break;
    }
    return tr(L"renamed");
}

/// The same in every language.
const wchar_t* codeOf(Kind kind) {
    constexpr std::array codes = {L"added", L"modified", L"removed", L"renamed"};
    return codes.at(static_cast<std::size_t>(kind));
}

int widestWord() {
    int width = 0;
    for (const Kind kind : kinds)
        width = std::max(width, wordOf(kind).getLength());
    return width;
}

}  // namespace

OdString differenceText(const Difference& difference) {
    OdString word = wordOf(kindOf(difference));
    for (const int width = widestWord(); word.getLength() < width;)
        word += L' ';
    OdString text = L"  " + word + L"  ";
    if (difference.isRenamed())
        text += printable(difference.previousPath) + L" -> ";
    return text + printable(difference.path);
}

OdString sizeText(const Difference& difference) {
    if (difference.before && difference.after && difference.hasOtherContents())
        return OdString::format(tr(L" (%i -> %i bytes)"), difference.before->sizeBytes,
                                difference.after->sizeBytes);
    const TreeFile& version = difference.after ? *difference.after : *difference.before;
    return OdString::format(tr(L" (%i bytes)"), version.sizeBytes);
}

jsonlib::json::Array toJson(const std::vector<Difference>& differences) {
    jsonlib::json::Array array;
    for (const Difference& difference : differences) {
        jsonlib::json::Object object;
        object[L"path"] = difference.path.toWide();
        object[L"change"] = codeOf(kindOf(difference));
        if (difference.isRenamed())
            object[L"previousPath"] = difference.previousPath.toWide();
        if (difference.before) {
            object[L"sizeBefore"] = difference.before->sizeBytes;
            object[L"digestBefore"] = difference.before->digest().toWide();
        }
        if (difference.after) {
            object[L"sizeAfter"] = difference.after->sizeBytes;
            object[L"digestAfter"] = difference.after->digest().toWide();
        }
        array.emplace_back(std::move(object));
    }
    return array;
}

}  // namespace qrv::cli
