#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/tree/Shape.h>

#include <algorithm>
#include <set>
#include <utility>

namespace qrv {

FileQuestions questionsOf(const Tree& tree) {
    const auto below = [&tree](const OdString& path) {
        const OdString prefix = path + L'/';
        std::vector<OdString> paths;
        for (auto file = tree.lower_bound(prefix); file != tree.end(); ++file) {
            if (file->first.text().left(prefix.getLength()) != prefix)
                break;
            paths.push_back(file->first);
        }
        return paths;
    };
    return {[&tree](const OdString& path) { return fileIn(tree, path) != nullptr; }, below};
}

RoomCheck::RoomCheck(FileQuestions files, std::function<bool(const OdString& path)> isGone)
    : files_(std::move(files)), isGone_(std::move(isGone)) {
}

OdString RoomCheck::fileInTheWay(const OdString& path) {
    // Where one is, there is room for another.
    if (files_.isFile(path))
        return {};
    if (OdString above = fileAbove(path); !above.isEmpty())
        return above;
    for (const OdString& below : files_.filesBelow(path)) {
        if (!isGone_(below))
            return below;
    }
    return {};
}

OdString RoomCheck::fileAbove(const OdString& path) {
    const OdString parent = path.left(std::max(0, path.reverseFind(L'/')));
    if (freeFolder_ == parent)
        return {};
    for (int slash = path.find(L'/'); slash >= 0; slash = path.find(L'/', slash + 1)) {
        OdString folder = path.left(slash);
        if (files_.isFile(folder) && !isGone_(folder))
            return folder;
    }
    freeFolder_ = parent;
    return {};
}

Expected<void> checkShape(FileQuestions tree, const std::vector<FileDelta>& deltas) {
    std::set<OdString> removed;
    for (const FileDelta& delta : deltas) {
        if (delta.url.isEmpty())
            removed.insert(delta.path);
    }
    RoomCheck room(std::move(tree),
                   [&removed](const OdString& path) { return removed.contains(path); });
    for (const FileDelta& delta : deltas) {
        const OdString other = delta.url.isEmpty() ? OdString() : room.fileInTheWay(delta.path);
        if (!other.isEmpty())
            return ErrorMessage{OdString::format(
                tr(L"'%ls' and '%ls' cannot be in one commit: one is a file where the other needs "
                   L"a folder"),
                printable(delta.path), printable(other))};
    }
    return {};
}

}  // namespace qrv
