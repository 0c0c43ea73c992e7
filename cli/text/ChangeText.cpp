#include <cli/terminal/Colour.h>
#include <cli/text/ChangeText.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>

#include <algorithm>
#include <utility>

namespace qrv::cli {

using common::FileChange;

namespace {

int widestWord() {
    int width = 0;
    for (const FileChange change : {FileChange::added, FileChange::modified, FileChange::removed})
        width = std::max(width, changeWord(change).getLength());
    return width;
}

Colour colourOf(FileChange change) {
    if (change == FileChange::added)
        return Colour::green;
    return change == FileChange::removed ? Colour::red : Colour::yellow;
}

}  // namespace

OdString changeWord(FileChange change) {
    switch (change) {
        case FileChange::added:
            return tr(L"added");
        case FileChange::modified:
            return tr(L"modified");
        case FileChange::removed:
            return tr(L"removed");
        case FileChange::unchanged:
            break;
    }
    return tr(L"unchanged");
}

OdString changeLine(FileChange change, const OdString& path) {
    OdString word = changeWord(change);
    for (int width = widestWord(); word.getLength() < width;)
        word += L' ';
    return OdString::format(L"  %ls  %ls\n", coloured(colourOf(change), word), printable(path));
}

jsonlib::json::Array toJson(const std::vector<common::StagedFile>& files) {
    jsonlib::json::Array array;
    for (const common::StagedFile& file : files) {
        jsonlib::json::Object object;
        object[L"path"] = file.path.toWide();
        // Every change that reaches this list has a name.
        object[L"change"] = common::toString(file.change)->toWide();
        array.emplace_back(std::move(object));
    }
    return array;
}

}  // namespace qrv::cli
