#include <cli/terminal/Colour.h>
#include <cli/text/ChangeText.h>
#include <cli/text/ConflictText.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>

#include <utility>

namespace qrv::cli {

OdString conflictLines(const std::vector<common::ConflictData>& conflicts) {
    OdString lines;
    for (const common::ConflictData& conflict : conflicts)
        lines += OdString::format(tr(L"  %ls (%ls here, %ls there)\n"),
                                  coloured(Colour::red, printable(conflict.path)),
                                  changeWord(conflict.localType), changeWord(conflict.remoteType));
    return lines;
}

jsonlib::json::Array toJson(const std::vector<common::ConflictData>& conflicts) {
    jsonlib::json::Array array;
    for (const common::ConflictData& conflict : conflicts) {
        jsonlib::json::Object object;
        object[L"path"] = conflict.path.toWide();
        // The state's reader accepts only changes that have a name.
        object[L"local"] = common::toString(conflict.localType)->toWide();
        object[L"remote"] = common::toString(conflict.remoteType)->toWide();
        array.emplace_back(std::move(object));
    }
    return array;
}

}  // namespace qrv::cli
